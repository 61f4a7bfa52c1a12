// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/inventory.h"

#include "client/field_reader.h"
#include "wire/separators.h"

namespace client {

namespace {

/// Degrees Celsius: the raw value has 16 bits, and the service divides tenths of degrees.
constexpr qint32 kHottest = 6553;

std::optional<Drive> drivePayload(const QString &payload, qint32 number)
{
    FieldReader fields(payload.split(kFieldSeparator));
    Drive drive;
    drive.number = number;
    drive.model = fields.text();
    drive.serial = fields.text();
    drive.firmware = fields.text();
    drive.capacity = fields.number<quint64>();
    drive.ataMajor = fields.number<qint32>();
    drive.ataVersion = fields.text();
    drive.smartState = SmartState(fields.number<qint32>(-1, 1));
    drive.cylinders = fields.number<qint64>();
    drive.tracksPerCylinder = fields.number<quint32>();
    drive.sectorsPerTrack = fields.number<quint32>();
    drive.bytesPerSector = fields.number<quint32>();
    drive.offlineStatus = fields.number<qint32>();
    drive.offlineCapability = fields.number<qint32>();
    drive.smartCapability = fields.number<qint32>();
    drive.attributeCount = fields.number<qint32>(0);
    drive.volumeCount = fields.number<qint32>(0);
    drive.powerOn.isMeasured = fields.flag();
    drive.powerOn.unit = PowerOnCounter::Unit(fields.number<qint32>(0, 4));
    drive.powerOn.raw = fields.number<qint64>();
    drive.powerOnRawLast = fields.number<qint64>();
    const bool hasTemperature = fields.flag();
    const auto temperature = fields.number<qint32>(-kHottest, kHottest);
    if (hasTemperature)
        drive.temperature = temperature;
    drive.statusLevel = Level(fields.number<qint32>(0, 3));
    drive.health = fields.number<qint32>();
    drive.monitored = fields.number<qint32>(0, 255);
    if (!fields.fits())
        return std::nullopt;
    return drive;
}

std::optional<Volume> volumeItem(const QString &item)
{
    FieldReader fields(item.split(kFieldSeparator));
    Volume volume;
    volume.drive = fields.number<qint32>(0);
    volume.root = fields.text();
    volume.label = fields.text();
    volume.fileSystem = fields.text();
    volume.serial = fields.text();
    volume.totalBytes = fields.number<quint64>();
    volume.freeBytes = fields.number<quint64>();
    if (!fields.fits())
        return std::nullopt;
    return volume;
}

void readValues(FieldReader &fields, Attribute &attribute)
{
    attribute.current = fields.number<quint32>(0, 255);
    attribute.raw = fields.number<qint64>(0);
    attribute.worst = fields.number<quint32>(0, 255);
    attribute.threshold = fields.number<quint32>(0, 255);
}

std::optional<Attribute> attributeItem(const QString &item)
{
    FieldReader fields(item.split(QLatin1Char('~')));
    Attribute attribute;
    attribute.id = fields.number<quint32>(1, 255);
    attribute.isPrefailure = !fields.flag();
    attribute.flagBit2 = fields.flag();
    readValues(fields, attribute);
    if (!fields.fits())
        return std::nullopt;
    return attribute;
}

std::optional<DriveAttribute> driveAttributeItem(const QString &item)
{
    constexpr quint32 kReserved = 0;
    FieldReader fields(item.split(kFieldSeparator));
    DriveAttribute entry;
    Attribute &attribute = entry.attribute;
    entry.drive = fields.number<qint32>(0);
    attribute.id = fields.number<quint32>(1, 255);
    attribute.flags = fields.number<quint32>(0, 65535);
    attribute.isPrefailure = !fields.flag();
    attribute.flagBit2 = fields.flag();
    (void)fields.number<quint32>(kReserved, kReserved);
    readValues(fields, attribute);
    if (!fields.fits())
        return std::nullopt;
    return entry;
}

} // namespace

std::optional<QVector<Drive>> parseAllDrives(const QString &reply)
{
    const auto payload = afterPrefix(reply, QStringLiteral("ALLDEVINFO_OK]!["));
    if (!payload)
        return std::nullopt;
    if (*payload == QLatin1String("0"))
        return QVector<Drive>();
    qint32 number = 0;
    return parseItems(payload->split(kItemSeparator),
                      [&number](const QString &item) { return drivePayload(item, number++); });
}

std::optional<Drive> parseDrive(const QString &reply, qint32 index)
{
    const auto payload = afterPrefix(reply, QStringLiteral("DEVINFO_OK,%1,").arg(index));
    return payload ? drivePayload(*payload, index) : std::nullopt;
}

std::optional<QVector<Volume>> parseAllVolumes(const QString &reply)
{
    const auto payload = afterPrefix(reply, QStringLiteral("ALLVOLINFO_OK]!["));
    if (!payload)
        return std::nullopt;
    if (payload->isEmpty() || *payload == QLatin1String("0"))
        return QVector<Volume>();
    return parseItems(payload->split(kItemSeparator), volumeItem);
}

std::optional<QVector<Attribute>> parseAttributes(const QString &reply, qint32 index)
{
    const auto payload = afterPrefix(reply, QStringLiteral("SMARTINFO_OK,%1,").arg(index));
    if (!payload || !payload->startsWith(QLatin1Char('{')) || !payload->endsWith(QLatin1Char('}')) ||
        payload->size() < 2)
        return std::nullopt;
    const QString items = payload->mid(1, payload->size() - 2);
    if (items.isEmpty())
        return QVector<Attribute>();
    return parseItems(items.split(QLatin1Char(';')), attributeItem);
}

std::optional<QVector<DriveAttribute>> parseAllAttributes(const QString &reply)
{
    const auto payload = afterPrefix(reply, QStringLiteral("ALLSMARTINFO_OK]!["));
    if (!payload)
        return std::nullopt;
    if (payload->isEmpty() || *payload == QLatin1String("0"))
        return QVector<DriveAttribute>();
    return parseItems(payload->split(kItemSeparator), driveAttributeItem);
}

} // namespace client
