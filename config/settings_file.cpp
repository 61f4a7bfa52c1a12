// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings_file.h"

#include "disk/date_time_text.h"
#include "scan/schedule.h"

#include <QStringList>

#include <algorithm>
#include <limits>
#include <variant>

namespace {

/// A number that is accepted if it is greater than 0 and less than `limit`.
struct NumberField
{
    qint32 ServiceSettings::*member;
    qint32 limit;
};

struct PlainKey
{
    QLatin1String text; ///< the text that a line is searched for, "=" included
    std::variant<bool ServiceSettings::*, NumberField, QString ServiceSettings::*> field;
};

const PlainKey kPopupNotify{QLatin1String("popupNotify="), &Settings::popupNotify};
const PlainKey kEmailNotify{QLatin1String("emailNotify="), &Settings::emailNotify};
const PlainKey kLogSysEvLog{QLatin1String("logSysEvLog="), &Settings::logSysEvLog};
const PlainKey kCTemp{QLatin1String("cTemp="), NumberField{&Settings::cTemp, 100}};
const PlainKey kWTemp{QLatin1String("wTemp="), NumberField{&Settings::wTemp, 100}};
const PlainKey kWarnExtTask{QLatin1String("warnExtTask="), &Settings::warnExtTask};
const PlainKey kCritExtTask{QLatin1String("critExtTask="), &Settings::critExtTask};
const PlainKey kSmtpNeedAuth{QLatin1String("smtpNeedAuth="), &Settings::smtpNeedAuth};
const PlainKey kSmtpPort{QLatin1String("smtpPort="), NumberField{&Settings::smtpPort, 100000}};
const PlainKey kSmtpFrom{QLatin1String("smtpFrom="), &Settings::smtpFrom};
const PlainKey kSmtpTo{QLatin1String("smtpTo="), &Settings::smtpTo};
const PlainKey kSmtpSubj{QLatin1String("smtpSubj="), &Settings::smtpSubj};
const PlainKey kSmtpServer{QLatin1String("smtpServer="), &Settings::smtpServer};
const PlainKey kSmtpUser{QLatin1String("smtpUser="), &Settings::smtpUser};
const PlainKey kSmtpPass{QLatin1String("smtpPass="), &Settings::smtpPass};

/// A line is tested against every key in this order; the text of each key that it contains is removed.
const PlainKey *const kReadingOrder[] = {
    &kPopupNotify, &kEmailNotify, &kLogSysEvLog,  &kCTemp,    &kWTemp,
    &kWarnExtTask, &kCritExtTask, &kSmtpNeedAuth, &kSmtpPort, &kSmtpFrom,
    &kSmtpTo,      &kSmtpSubj,    &kSmtpServer,   &kSmtpUser, &kSmtpPass,
};

const PlainKey *const kWritingOrder[] = {
    &kPopupNotify,  &kEmailNotify, &kCTemp,    &kWTemp,       &kLogSysEvLog,
    &kSmtpNeedAuth, &kSmtpPort,    &kSmtpFrom, &kSmtpTo,      &kSmtpSubj,
    &kSmtpServer,   &kSmtpUser,    &kSmtpPass, &kWarnExtTask, &kCritExtTask,
};

const QLatin1String kDiskKey("disk=");
const QLatin1String kScanKey("scan=");

constexpr int kDiskFields = 6;
constexpr int kScanFieldsWithRanges = 7;

/// Represents a schedule without a valid time of day. As a moment it lies in 2106, beyond the years that a
/// schedule can name.
constexpr quint32 kNoScheduledMoment = std::numeric_limits<quint32>::max();

/// The date of a drive that was never scanned, and of a schedule that has a time but no valid date.
const QDate kNoDate(1980, 1, 1);

template <typename Function>
void forEachLine(const QByteArray &file, Function take)
{
    for (int start = 0; start < file.size();) {
        const int found = file.indexOf('\n', start);
        const int end = found < 0 ? file.size() : found;
        take(unscramble(QByteArray::fromRawData(file.constData() + start, end - start)));
        start = end + 1;
    }
}

void takeValue(Settings &settings, bool ServiceSettings::*member, const QString &value)
{
    const int number = value.toInt();
    if (number == 0 || number == 1)
        settings.*member = number == 1;
}

void takeValue(Settings &settings, const NumberField &field, const QString &value)
{
    const int number = value.toInt();
    if (number > 0 && number < field.limit)
        settings.*field.member = number;
}

void takeValue(Settings &settings, QString ServiceSettings::*member, const QString &value)
{
    settings.*member = value;
}

QString valueText(const Settings &settings, bool ServiceSettings::*member)
{
    return settings.*member ? QStringLiteral("1") : QStringLiteral("0");
}

QString valueText(const Settings &settings, const NumberField &field)
{
    return QString::number(settings.*field.member);
}

QString valueText(const Settings &settings, QString ServiceSettings::*member)
{
    return settings.*member;
}

void readSettingsLine(QString line, Settings &settings)
{
    for (const PlainKey *key : kReadingOrder) {
        if (!line.contains(key->text))
            continue;
        line.remove(key->text);
        std::visit([&](const auto &field) { takeValue(settings, field, line); }, key->field);
    }
}

/// Returns 0 for a drive without sectors.
quint64 lastSector(quint64 capacity)
{
    const quint64 sectors = capacity / quint64(kScanSectorSize);
    return sectors == 0 ? 0 : sectors - 1;
}

void setInitialState(DeviceRecord &device, const QDateTime &now)
{
    const quint64 last = lastSector(device.capacity);
    device.scan.percent = 0;
    device.scan.first = 0;
    device.scan.current = last;
    device.scan.time = QDateTime(kNoDate, QTime(0, 0));
    device.scheduleRange = {0, last};
    device.schedule.date = now.date();
    device.schedule.time = now.time();
}

/// Returns the drive at the place in the list that `text` gives; null if there is none.
DeviceRecord *namedDevice(DeviceList &devices, const QString &text)
{
    const int index = text.toInt();
    return index >= 0 && index < devices.size() ? &devices[index] : nullptr;
}

void setSchedule(DeviceRecord &device, quint32 secondsSinceEpoch)
{
    const bool valid = secondsSinceEpoch != kNoScheduledMoment;
    const QDateTime moment = valid ? QDateTime::fromSecsSinceEpoch(secondsSinceEpoch) : QDateTime();
    device.schedule.date = moment.date();
    device.schedule.time = moment.time();
}

void readDiskLine(const QString &value, DeviceList &devices)
{
    const QStringList fields = value.split(u'!');
    if (fields.size() != kDiskFields)
        return;
    DeviceRecord *device = namedDevice(devices, fields[0]);
    if (!device)
        return;
    device->scheduleRange = {quint64(fields[1].toLongLong()), quint64(fields[2].toLongLong())};
    device->schedule.kind = ScheduleKind(fields[3].toInt());
    device->schedule.weekday = fields[4].toInt();
    setSchedule(*device, fields[5].toUInt());
}

/// Parses "first-last,first-last,"; items that are not pairs are ignored.
QVector<SectorRange> badRangesFromText(const QString &text)
{
    QVector<SectorRange> ranges;
    for (int start = 0; start < text.size() && ranges.size() < kMaxBadRanges;) {
        const int found = text.indexOf(u',', start);
        const int end = found < 0 ? text.size() : found;
        const QVector<QStringRef> ends = text.midRef(start, end - start).split(u'-');
        if (ends.size() == 2)
            ranges.append({ends[0].toULongLong(), ends[1].toULongLong()});
        start = end + 1;
    }
    return ranges;
}

void readScanLine(const QString &value, DeviceList &devices)
{
    const QStringList fields = value.split(u';');
    DeviceRecord *device = namedDevice(devices, fields[0]);
    if (!device)
        return;
    device->scan.hasOpenFailed = false;
    device->scan.percent = fields.value(2).toInt();
    device->scan.first = fields.value(3).toULongLong();
    device->scan.current = fields.value(4).toULongLong();
    const DateAndTime scanTime = parseDateTime(fields.value(5));
    device->scan.time = QDateTime(scanTime.date, scanTime.time);
    device->scan.badRanges =
        fields.size() == kScanFieldsWithRanges ? badRangesFromText(fields[6]) : QVector<SectorRange>();
}

quint32 scheduledSeconds(const DeviceRecord &device)
{
    if (!device.schedule.time.isValid())
        return kNoScheduledMoment;
    QDate date = device.schedule.date.isValid() ? device.schedule.date : kNoDate;
    // Only the time of day of a daily or weekly schedule counts. On a day on which the clock skips that time
    // it would be read back as another one.
    const bool isRepeated =
        device.schedule.kind == ScheduleKind::Daily || device.schedule.kind == ScheduleKind::Weekly;
    const QTime time = device.schedule.time.addMSecs(-device.schedule.time.msec());
    while (isRepeated &&
           QDateTime::fromSecsSinceEpoch(QDateTime(date, time).toSecsSinceEpoch()).time() != time)
        date = date.addDays(1);
    return quint32(QDateTime(date, time).toSecsSinceEpoch());
}

QString diskLine(int index, const DeviceRecord &device)
{
    return kDiskKey + QStringLiteral("%1!%2!%3!%4!%5!%6")
                          .arg(index)
                          .arg(qint64(device.scheduleRange.first))
                          .arg(qint64(device.scheduleRange.last))
                          .arg(int(device.schedule.kind))
                          .arg(device.schedule.weekday)
                          .arg(scheduledSeconds(device));
}

QString scanLine(int index, const DeviceRecord &device)
{
    QString line = kScanKey + QStringLiteral("%1;0;%2;%3;%4;%5;")
                                  .arg(index)
                                  .arg(device.scan.percent)
                                  .arg(device.scan.first)
                                  .arg(device.scan.current)
                                  .arg(device.scan.time.toString(kDateTimeFormat));
    for (const SectorRange &range : device.scan.badRanges)
        line += QString::number(range.first) + u'-' + QString::number(range.last) + u',';
    return line;
}

} // namespace

void readSettingsLines(const QByteArray &file, Settings &settings)
{
    forEachLine(file, [&settings](const QString &line) { readSettingsLine(line, settings); });
}

void readDriveState(const QByteArray &file, DeviceList &devices, const QDateTime &now)
{
    for (DeviceRecord &device : devices)
        setInitialState(device, now);
    forEachLine(file, [&devices](QString line) {
        if (line.contains(kDiskKey))
            readDiskLine(line.remove(kDiskKey), devices);
        if (line.contains(kScanKey))
            readScanLine(line.remove(kScanKey), devices);
    });
}

void copyDriveState(const DeviceList &from, DeviceList &to)
{
    for (int i = 0; i < std::min(from.size(), to.size()); ++i) {
        to[i].schedule = from[i].schedule;
        to[i].scheduleRange = from[i].scheduleRange;
        to[i].scan = from[i].scan;
        to[i].scan.hasOpenFailed = false;
    }
}

QByteArray settingsFileText(const Settings &settings, const DeviceList &devices, const OffsetSource &offsets)
{
    QByteArray text;
    const auto append = [&](const QString &line) { text += scramble(line, offsets()) + '\n'; };
    for (const PlainKey *key : kWritingOrder)
        append(key->text +
               std::visit([&](const auto &field) { return valueText(settings, field); }, key->field));
    for (int i = 0; i < devices.size(); ++i)
        append(diskLine(i, devices[i]));
    for (int i = 0; i < devices.size(); ++i)
        append(scanLine(i, devices[i]));
    return text;
}
