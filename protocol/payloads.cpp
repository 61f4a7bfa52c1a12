// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/payloads.h"

#include "disk/date_time_text.h"

#include <array>
#include <charconv>
#include <limits>
#include <type_traits>

namespace {

const QLatin1String kFieldSeparator("~;");
const QLatin1String kItemSeparator("]~[");

/// Writes the fields of one item behind each other. A large machine's S.M.A.R.T. reply has tens of thousands
/// of numbers, so they are written straight into the text.
class ItemWriter
{
public:
    ItemWriter(QString &text, QLatin1String separator)
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
    const QLatin1String m_separator;
    bool m_first = true;
};

void writeDevice(ItemWriter &&item, const DeviceRecord &device)
{
    item << device.model << device.serial << device.firmware << device.capacity << device.ataMajor
         << device.ataVersion << device.smartState << device.cylinders << device.tracksPerCylinder
         << device.sectorsPerTrack << device.bytesPerSector << device.offlineStatus
         << device.offlineCapability << device.smartCapability << device.attributeCount
         << device.volumes.size() << device.lifeTimeDetected << device.lifeTimeUnit
         << qint64(device.powerOnRaw) << qint64(device.powerOnRawLast) << device.hasTemperature
         << device.temperature << device.statusLevel << device.health << int(quint8(device.monitored));
}

void writeVolume(ItemWriter &item, const VolumeEntry &volume)
{
    item << volume.root << volume.label << volume.fileSystem << volume.volumeSerial << volume.totalBytes
         << volume.freeBytes;
}

void writeBadRanges(QString &text, const QVector<SectorRange> &ranges)
{
    for (const SectorRange &range : ranges) {
        ItemWriter(text, QLatin1String("-")) << qint64(range.first) << qint64(range.last);
        text += QLatin1Char(',');
    }
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
    return device.scanError == 1 ? OpenFailed : Idle;
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
    for (const AttributeEntry &attribute : device.attributes) {
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
    for (const AttributeEntry &attribute : device.attributes)
        ItemWriter(text, kFieldSeparator) << attribute.id << attribute.current;
    text.chop(1);
    return inBraces(text);
}

QString allSmart(const DeviceList &devices)
{
    if (devices.isEmpty())
        return QStringLiteral("0");
    QString text;
    for (int i = 0; i < devices.size(); ++i) {
        for (const AttributeEntry &attribute : devices[i].attributes) {
            ItemWriter(text, kFieldSeparator)
                << i << attribute.id << attribute.flags << attribute.notPrefailure << attribute.flagBit2
                << attribute.reserved << attribute.current << qint64(attribute.raw) << attribute.worst
                << attribute.threshold;
            text += kItemSeparator;
        }
    }
    text.chop(kItemSeparator.size());
    return text;
}

QString scanStatus(const DeviceList &devices, const std::function<bool(int)> &isScanRunning)
{
    QString text;
    for (int i = 0; i < devices.size(); ++i) {
        const DeviceRecord &device = devices[i];
        ItemWriter(text, QLatin1String(";"))
            << i << int(scanState(device, isScanRunning(i))) << device.scanPercent << device.scanFirst
            << device.scanCurrent << device.scanTime.toString(kDateTimeFormat);
        text += QLatin1Char(';');
        writeBadRanges(text, device.badRanges);
        text.chop(1); // the comma of the last range, or the semicolon where there is none
        text += QLatin1Char('|');
    }
    text.chop(1);
    return text;
}

QString scanSchedule(const DeviceList &devices)
{
    QString text;
    for (int i = 0; i < devices.size(); ++i) {
        const DeviceRecord &device = devices[i];
        text += QLatin1String("]![");
        ItemWriter(text, kFieldSeparator) << i << device.schedKind << device.schedParam
                                          << device.schedDate.toString(QStringLiteral("yyMMdd"))
                                          << device.schedTime.toString(QStringLiteral("hhmmss"));
    }
    return text;
}

} // namespace payload
