// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"

#include "client/failure.h"
#include "client/history.h"
#include "client/units.h"
#include "wire/attribute_catalogue.h"

#include <QHash>

#include <algorithm>

namespace client {

namespace {

const QString kDateForm = QStringLiteral("yyyy-MM-dd");
const QString kTimeForm = QStringLiteral("HH:mm:ss");

const QStringList kScheduleKinds{QStringLiteral("none"), QStringLiteral("once"), QStringLiteral("daily"),
                                 QStringLiteral("weekly"), QStringLiteral("unknown")};

const QStringList kWeekdays{QStringLiteral("monday"),    QStringLiteral("tuesday"),
                            QStringLiteral("wednesday"), QStringLiteral("thursday"),
                            QStringLiteral("friday"),    QStringLiteral("saturday"),
                            QStringLiteral("sunday")};

Cell withUnit(const std::optional<qint32> &number, const char *unit)
{
    return number ? Cell{QStringLiteral("%1 %2").arg(QString::number(*number), QString::fromUtf8(unit))}
                  : Cell{QStringLiteral("-"), Tone::Dim};
}

std::optional<qint32> ratedHealth(const Drive &drive)
{
    return drive.isRated() ? std::optional<qint32>(drive.health) : std::nullopt;
}

Cell attributeCountCell(const Drive &drive)
{
    switch (drive.smartState) {
    case SmartState::Read:
        return {QString::number(drive.attributeCount)};
    case SmartState::NoAttributes:
        return {QStringLiteral("none")};
    case SmartState::NeverRead:
        break;
    }
    return {QStringLiteral("not read")};
}

QString powerOnUnitName(const PowerOnCounter &counter)
{
    static const QStringList kUnits{QStringLiteral("unknown"), QStringLiteral("hours"),
                                    QStringLiteral("minutes"), QStringLiteral("halfMinutes"),
                                    QStringLiteral("seconds")};
    return kUnits.value(int(counter.unit));
}

Cell attributeValueCell(const Attribute &attribute)
{
    return {QString::number(attribute.current), attribute.isFailing() ? Tone::Bad : Tone::Plain};
}

Cell attributeStateCell(const Attribute &attribute)
{
    return attribute.isFailing() ? Cell{QStringLiteral("FAILING"), Tone::Bad} : Cell{};
}

Cell attributeKindCell(const Attribute &attribute)
{
    return {attribute.isPrefailure ? QStringLiteral("pre-failure") : QStringLiteral("advisory")};
}

QJsonValue badRangeArray(const ScanStatus &status)
{
    QJsonArray ranges;
    for (const SectorRange &range : status.badRanges)
        ranges.append(QJsonArray{toJson(range.first), toJson(range.last)});
    return ranges;
}

/// Returns a column of a property that only a drive that was scanned has.
Column<ScanStatus> scanField(const char *key, const std::function<QJsonValue(const ScanStatus &)> &value)
{
    return field<ScanStatus>(key, [value](const ScanStatus &status) {
        return status.hasRun() ? value(status) : QJsonValue(QJsonValue::Undefined);
    });
}

/// Returns a column of the scan's time: its start while it runs, else its end.
Column<ScanStatus> scanTimeField(const char *key, bool isOfRunning, const QTimeZone &zone)
{
    return scanField(key, [isOfRunning, zone](const ScanStatus &status) {
        const bool isRunning = status.state == ScanState::Running;
        return isRunning == isOfRunning ? isoTime(withZone(status.time, zone))
                                        : QJsonValue(QJsonValue::Undefined);
    });
}

/// Returns a column of a property that only schedules of `kind` have; None: all that name a time.
Column<ScheduleEntry> scheduleField(const char *key, ScheduleKind kind,
                                    const std::function<QString(const ScheduleEntry &)> &text)
{
    return field<ScheduleEntry>(key, [kind, text](const ScheduleEntry &entry) -> QJsonValue {
        const bool exists = kind == ScheduleKind::None ? entry.kind != kind : entry.kind == kind;
        return exists ? QJsonValue(text(entry)) : QJsonValue(QJsonValue::Undefined);
    });
}

} // namespace

QString levelName(Level level)
{
    static const QStringList kNames{QStringLiteral("not rated"), QStringLiteral("fine"),
                                    QStringLiteral("warning"), QStringLiteral("critical")};
    return kNames.value(int(level));
}

Tone levelTone(Level level)
{
    constexpr Tone kTones[] = {Tone::Dim, Tone::Good, Tone::Warning, Tone::Bad};
    return kTones[int(level)];
}

QJsonValue levelValue(Level level)
{
    return level == Level::NotRated ? QJsonValue() : QJsonValue(levelName(level));
}

QString attributeName(quint32 id)
{
    static const QHash<quint32, QString> kFurther{
        {170, QStringLiteral("Reserved block count")},
        {171, QStringLiteral("Program failure count")},
        {172, QStringLiteral("Erase failure count")},
        {173, QStringLiteral("Wear leveling count")},
        {174, QStringLiteral("Unexpected power loss count")},
        {183, QStringLiteral("SATA downshift count")},
        {184, QStringLiteral("End-to-end error count")},
        {187, QStringLiteral("Reported uncorrectable errors")},
        {188, QStringLiteral("Command timeout count")},
        {189, QStringLiteral("High fly writes")},
        {241, QStringLiteral("Total LBAs written")},
        {242, QStringLiteral("Total LBAs read")},
    };
    const auto further = kFurther.constFind(id);
    return further != kFurther.cend() ? *further : attribute_catalogue::name(qint32(id));
}

QString scheduleKindName(ScheduleKind kind)
{
    return kScheduleKinds.value(int(kind));
}

std::optional<ScheduleKind> scheduleKind(const QString &name)
{
    const int place = int(kScheduleKinds.indexOf(name));
    const bool isKnown = place >= 0 && ScheduleKind(place) != ScheduleKind::Unknown;
    return isKnown ? std::optional<ScheduleKind>(ScheduleKind(place)) : std::nullopt;
}

std::optional<qint32> weekdayNumber(const QString &name)
{
    const int place = int(kWeekdays.indexOf(name.toLower()));
    return place >= 0 ? std::optional<qint32>(place) : std::nullopt;
}

QString scheduleText(const ScheduleEntry &entry)
{
    const QString never = QStringLiteral("never: the stored time does not exist");
    if (entry.kind == ScheduleKind::None)
        return QStringLiteral("no scan scheduled");
    if (entry.kind == ScheduleKind::Unknown)
        return QStringLiteral("never: the stored kind of schedule does not exist");
    if (!entry.time.isValid())
        return never;
    const QString time = entry.time.toString(kTimeForm);
    if (entry.kind == ScheduleKind::Daily)
        return QStringLiteral("daily at ") + time;
    if (entry.kind == ScheduleKind::Once)
        return entry.date.isValid() ? QStringLiteral("once, %1 %2").arg(entry.date.toString(kDateForm), time)
                                    : never;
    const QString weekday = kWeekdays.value(entry.weekday);
    return weekday.isEmpty() ? never : QStringLiteral("every %1 at %2").arg(weekday, time);
}

QString scanStateName(const ScanStatus &status)
{
    if (status.state == ScanState::Running)
        return QStringLiteral("running");
    if (status.state == ScanState::Failed)
        return QStringLiteral("failed");
    if (!status.hasRun())
        return QStringLiteral("never");
    return status.isComplete() ? QStringLiteral("done") : QStringLiteral("stopped");
}

const Columns<Drive> &driveColumns()
{
    static const auto kHealth = [](const Drive &d) { return withUnit(ratedHealth(d), "%"); };
    static const Columns<Drive> kColumns{
        column<Drive>("number", "No", Layout::Right, &Drive::number),
        column<Drive>("model", "Model", Layout::Shrinking, &Drive::model),
        column<Drive>("serial", "Serial", Layout::Shrinking, &Drive::serial),
        field<Drive>("firmware", &Drive::firmware),
        column<Drive>("capacityBytes", "Size", Layout::Right, &Drive::capacity,
                      [](const Drive &d) { return Cell{sizeText(d.capacity)}; }),
        field<Drive>("bytesPerSector", &Drive::bytesPerSector),
        field<Drive>("ataMajor", &Drive::ataMajor),
        field<Drive>("ataVersion", &Drive::ataVersion),
        field<Drive>("smartState", [](const Drive &d) { return int(d.smartState); }),
        column<Drive>("temperatureCelsius", "Temp", Layout::Right, &Drive::temperature,
                      [](const Drive &d) { return withUnit(d.temperature, "°C"); }),
        column<Drive>("healthPercent", "Health", Layout::Right, ratedHealth, kHealth),
        column<Drive>(
            "level", "Level", Layout::Left, [](const Drive &d) { return levelValue(d.level()); },
            [](const Drive &d) {
                return Cell{levelName(d.level()), levelTone(d.level())};
            }),
        column<Drive>("attributeCount", "Attrs", Layout::Right, &Drive::attributeCount, attributeCountCell),
        field<Drive>("volumeCount", &Drive::volumeCount),
        field<Drive>("monitored", [](const Drive &d) { return d.monitored != 0; }),
        field<Drive>("powerOnRaw", [](const Drive &d) { return d.powerOn.raw; }),
        field<Drive>("powerOnUnit", [](const Drive &d) { return powerOnUnitName(d.powerOn); }),
        field<Drive>("powerOnHours", [](const Drive &d) { return d.powerOn.hours(); }),
    };
    return kColumns;
}

Column<Drive> driveColumn(const char *key)
{
    const Columns<Drive> &all = driveColumns();
    return *std::find_if(all.cbegin(), all.cend(),
                         [key](const Column<Drive> &column) { return column.key == QLatin1String(key); });
}

const Columns<Attribute> &attributeColumns()
{
    static const auto kName = [](const Attribute &a) { return attributeName(a.id); };
    static const Columns<Attribute> kColumns{
        column<Attribute>("id", "Id", Layout::Right, &Attribute::id),
        column<Attribute>("name", "Attribute", Layout::Shrinking, kName),
        column<Attribute>("value", "Value", Layout::Right, &Attribute::current, attributeValueCell),
        column<Attribute>("worst", "Worst", Layout::Right, &Attribute::worst),
        column<Attribute>("threshold", "Thresh", Layout::Right, &Attribute::threshold),
        column<Attribute>("raw", "Raw", Layout::Right, [](const Attribute &a) { return quint64(a.raw); }),
        column<Attribute>("prefailure", "Kind", Layout::Left, &Attribute::isPrefailure, attributeKindCell),
        column<Attribute>("failing", "State", Layout::Left, &Attribute::isFailing, attributeStateCell),
    };
    return kColumns;
}

const Columns<Volume> &volumeColumns()
{
    static const Columns<Volume> kColumns{
        column<Volume>("drive", "Drive", Layout::Right, &Volume::drive),
        column<Volume>("volume", "Volume", Layout::Shrinking, &Volume::root),
        column<Volume>("label", "Label", Layout::Shrinking, &Volume::label),
        column<Volume>("fileSystem", "File system", Layout::Left, &Volume::fileSystem),
        column<Volume>("serial", "Serial", Layout::Left, &Volume::serial),
        column<Volume>("totalBytes", "Size", Layout::Right, &Volume::totalBytes,
                       [](const Volume &v) { return Cell{sizeText(v.totalBytes)}; }),
        column<Volume>("freeBytes", "Free", Layout::Right, &Volume::freeBytes,
                       [](const Volume &v) { return Cell{sizeText(v.freeBytes)}; }),
    };
    return kColumns;
}

const Columns<ScheduleEntry> &scheduleColumns()
{
    using Entry = ScheduleEntry;
    static const Columns<Entry> kColumns{
        column<Entry>("drive", "Drive", Layout::Right, &Entry::drive),
        column<Entry>(
            "kind", "Surface scan", Layout::Left, [](const Entry &e) { return scheduleKindName(e.kind); },
            [](const Entry &e) { return Cell{scheduleText(e)}; }),
        scheduleField("time", ScheduleKind::None, [](const Entry &e) { return e.time.toString(kTimeForm); }),
        scheduleField("date", ScheduleKind::Once, [](const Entry &e) { return e.date.toString(kDateForm); }),
        scheduleField("weekday", ScheduleKind::Weekly,
                      [](const Entry &e) { return kWeekdays.value(e.weekday); }),
    };
    return kColumns;
}

const Columns<UserAccount> &userColumns()
{
    static const Columns<UserAccount> kColumns{
        column<UserAccount>("name", "User", Layout::Shrinking, &UserAccount::name),
        column<UserAccount>("level", "Level", Layout::Left, &UserAccount::level),
    };
    return kColumns;
}

Columns<ScanStatus> scanColumns(const QTimeZone &zone)
{
    return {
        field<ScanStatus>("drive", &ScanStatus::drive),
        field<ScanStatus>("state", scanStateName),
        field<ScanStatus>("running", [](const ScanStatus &s) { return s.state == ScanState::Running; }),
        field<ScanStatus>("failed", [](const ScanStatus &s) { return s.state == ScanState::Failed; }),
        field<ScanStatus>("badSectors", badRangeArray),
        scanField("percent", [](const ScanStatus &s) { return s.percent; }),
        scanField("firstSector", [](const ScanStatus &s) { return toJson(s.firstSector); }),
        scanField("currentSector", [](const ScanStatus &s) { return toJson(s.currentSector); }),
        scanTimeField("started", true, zone),
        scanTimeField("ended", false, zone),
    };
}

Columns<TemperatureRecord> temperatureColumns(const QTimeZone &zone)
{
    return {
        field<TemperatureRecord>(
            "time", [zone](const TemperatureRecord &r) { return isoTime(withZone(r.time, zone)); }),
        field<TemperatureRecord>("temperatureCelsius", &TemperatureRecord::temperature),
    };
}

} // namespace client
