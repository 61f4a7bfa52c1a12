// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/payloads.h"

#include "disk/date_time_text.h"
#include "wire/separators.h"

#include <array>
#include <charconv>
#include <limits>
#include <type_traits>

namespace {

/// Writes the fields of one item. A large machine's S.M.A.R.T. reply has tens of thousands
/// of numbers, so they are written straight into the text.
class ItemWriter
{
public:
    ItemWriter(QString &text, const QString &separator)
        : m_text(text)
        , m_separator(separator)
    {}

    ItemWriter &operator<<(const QString &field)
    {
        separate();
        m_text += field;
        return *this;
    }

    ItemWriter &operator<<(bool field) { return *this << int(field); }

    template <typename Integer, std::enable_if_t<std::is_integral_v<Integer>, int> = 0>
    ItemWriter &operator<<(Integer field)
    {
        separate();
        std::array<char, std::numeric_limits<quint64>::digits10 + 2> digits; // a sign is the one more
        const char *end = std::to_chars(digits.data(), digits.data() + digits.size(), field).ptr;
        m_text += QLatin1String(digits.data(), end);
        return *this;
    }

private:
    void separate()
    {
        if (!m_first)
            m_text += m_separator;
        m_first = false;
    }

    QString &m_text;
    const QString &m_separator;
    bool m_first = true;
};

void writeDevice(ItemWriter &&item, const DeviceRecord &device)
{
    const SmartValues &smart = device.smart;
    item << device.model << device.serial << device.firmware << device.capacity << device.ataMajor
         << device.ataVersion << int(smart.fullRead) << device.cylinders << device.tracksPerCylinder
         << device.sectorsPerTrack << device.bytesPerSector << smart.offlineStatus << smart.offlineCapability
         << smart.capability << smart.attributeCount << device.volumes.size() << smart.powerOn.isMeasured
         << int(smart.powerOn.unit) << smart.powerOn.raw << qint64(smart.powerOnRawLast)
         << smart.hasTemperature << smart.temperature << device.rating.level << device.rating.health
         << int(quint8(device.monitored));
}

void writeVolume(ItemWriter &item, const VolumeEntry &volume)
{
    item << volume.root << volume.label << volume.fileSystem << volume.volumeSerial << volume.totalBytes
         << volume.freeBytes;
}

int digitCount(qint64 number)
{
    int count = number < 0 ? 2 : 1;
    while ((number /= 10) != 0)
        ++count;
    return count;
}

QString inBraces(const QString &text)
{
    return QLatin1Char('{') + text + QLatin1Char('}');
}

enum ScanState { Idle = 0, Running = 1, OpenFailed = 2 };

ScanState scanState(const DeviceRecord &device, bool running)
{
    if (running)
        return Running;
    return device.scan.hasOpenFailed ? OpenFailed : Idle;
}

} // namespace

namespace payload {

QString device(const DeviceRecord &device)
{
    QString text;
    writeDevice(ItemWriter(text, kFieldSeparator), device);
    return text;
}

QString allDevices(const DeviceList &devices)
{
    if (devices.isEmpty())
        return QStringLiteral("0");
    QString text;
    for (const DeviceRecord &device : devices) {
        writeDevice(ItemWriter(text, kFieldSeparator), device);
        text += kItemSeparator;
    }
    text.chop(kItemSeparator.size());
    return text;
}

QString volume(const VolumeEntry &volume)
{
    QString text;
    ItemWriter item(text, kFieldSeparator);
    writeVolume(item, volume);
    return text;
}

QString allVolumes(const DeviceList &devices)
{
    if (devices.isEmpty())
        return QStringLiteral("0");
    QString text;
    for (int i = 0; i < devices.size(); ++i) {
        for (const VolumeEntry &volume : devices[i].volumes) {
            ItemWriter item(text, kFieldSeparator);
            item << i;
            writeVolume(item, volume);
            text += kItemSeparator;
        }
    }
    text.chop(kItemSeparator.size());
    return text;
}

QString smartInformation(const DeviceRecord &device)
{
    QString text;
    for (const AttributeEntry &attribute : device.smart.attributes) {
        ItemWriter(text, QLatin1String("~"))
            << attribute.id << attribute.notPrefailure << attribute.flagBit2 << attribute.current
            << qint64(attribute.raw) << attribute.worst << attribute.threshold;
        text += QLatin1Char(';');
    }
    text.chop(1);
    return inBraces(text);
}

QString smartValues(const DeviceRecord &device)
{
    QString text;
    for (const AttributeEntry &attribute : device.smart.attributes)
        ItemWriter(text, kFieldSeparator) << attribute.id << attribute.current;
    text.chop(1);
    return inBraces(text);
}

QString smartAttributes(int device, const QVector<AttributeEntry> &attributes)
{
    QString text;
    for (const AttributeEntry &attribute : attributes) {
        ItemWriter(text, kFieldSeparator)
            << device << attribute.id << attribute.flags << attribute.notPrefailure << attribute.flagBit2
            << attribute.reserved << attribute.current << qint64(attribute.raw) << attribute.worst
            << attribute.threshold;
        text += kItemSeparator;
    }
    text.chop(kItemSeparator.size());
    return text;
}

QString scanStatus(int index, const DeviceRecord &device, bool isRunning)
{
    QString text;
    ItemWriter(text, QLatin1String(";"))
        << index << int(scanState(device, isRunning)) << device.scan.percent << device.scan.first
        << device.scan.current << device.scan.time.toString(kDateTimeFormat);
    return text;
}

QByteArray badRanges(const QVector<SectorRange> &ranges, int begin, int end)
{
    QString text;
    for (int i = begin; i < end; ++i) {
        text += i == 0 ? QLatin1Char(';') : QLatin1Char(',');
        ItemWriter(text, QLatin1String("-")) << qint64(ranges[i].first) << qint64(ranges[i].last);
    }
    return text.toLatin1();
}

qint64 badRangesLength(const QVector<SectorRange> &ranges)
{
    constexpr int kSeparators = 2;
    qint64 length = 0;
    for (const SectorRange &range : ranges)
        length += kSeparators + digitCount(qint64(range.first)) + digitCount(qint64(range.last));
    return length;
}

QString scanSchedule(const DeviceList &devices)
{
    QString text;
    for (int i = 0; i < devices.size(); ++i) {
        const ScanSchedule &schedule = devices[i].schedule;
        text += kRequestSeparator;
        ItemWriter(text, kFieldSeparator)
            << i << int(schedule.kind) << schedule.weekday << schedule.date.toString(QStringLiteral("yyMMdd"))
            << schedule.time.toString(QStringLiteral("hhmmss"));
    }
    return text;
}

} // namespace payload
