// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_sectors.h"

#include "fuzz/fuzz_input.h"
#include "monitor/health.h"
#include "platform/drive_requests.h"

namespace {

constexpr quint64 kRawLimit = quint64(1) << 48;
constexpr int kSlots = 30;

/// Slots up to the first without an id.
int usedSlots(const QByteArray &data)
{
    int count = 0;
    while (count < kSlots && 2 + 12 * count < data.size() && data.at(2 + 12 * count) != '\0')
        ++count;
    return count;
}

void checkRecord(const DeviceRecord &device, int attributeCount)
{
    require(device.attributes.size() == attributeCount && device.smartState == (attributeCount > 0 ? 1 : 0));
    for (const AttributeEntry &attribute : device.attributes) {
        require(attribute.id >= 1 && attribute.id <= 255 && attribute.raw < kRawLimit);
        require(attribute.current <= 255 && attribute.worst <= 255 && attribute.threshold <= 255);
        require(attribute.notPrefailure + (attribute.flags & 1U) == 1 && attribute.flagBit2 <= 1);
    }
}

/// Reading the same sector once more changes no value.
void checkReadAgain(DeviceRecord device, const QByteArray &data)
{
    const QVector<AttributeEntry> before = device.attributes;
    const qint32 temperature = device.temperature;
    smart_sectors::applySynchronousRead(device, ByteView(data));
    require(device.attributes.size() == before.size() && device.temperature == temperature);
    for (int i = 0; i < before.size(); ++i)
        require(device.attributes[i].raw == before[i].raw &&
                device.attributes[i].current == before[i].current);
}

void checkRating(const DeviceRecord &device)
{
    const DriveRating rating = rateDrive(device, Settings());
    require(rating.level >= level::kFine && rating.level <= level::kCritical);
    require(rating.health >= 0 && rating.health <= 100);
    require((rating.level == level::kFine) == rating.detail.isEmpty());
}

} // namespace

/// Data and thresholds, either of which may be cut short, and a later read of other bytes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes = bytesOf(data, size);
    const SmartSectors sectors{bytes.left(ata::kSectorSize), bytes.mid(ata::kSectorSize, ata::kSectorSize)};
    DeviceRecord device;
    smart_sectors::applyFullRead(device, sectors);
    checkRecord(device, usedSlots(sectors.data));
    require(device.temperature >= 0 && device.temperature <= 6553);
    checkReadAgain(device, sectors.data);
    checkRating(device);

    smart_sectors::applySynchronousRead(device, ByteView(sectors.thresholds));
    checkRecord(device, usedSlots(sectors.data));
    checkRating(device);
    return 0;
}
