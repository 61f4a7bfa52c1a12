// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_sectors.h"

#include "fuzz/fuzz_input.h"
#include "monitor/health.h"
#include "platform/drive_requests.h"

#include <algorithm>

namespace {

/// Returns the number of slots before the first without an id.
int usedSlots(const QByteArray &data)
{
    int count = 0;
    while (count < 30 && 2 + 12 * count < data.size() && data.at(2 + 12 * count) != '\0')
        ++count;
    return count;
}

void checkRecord(const DeviceRecord &device, int attributeCount)
{
    require(device.smart.attributes.size() == attributeCount &&
            device.smart.fullRead == (attributeCount > 0 ? FullRead::Attributes : FullRead::NoAttributes));
    for (const AttributeEntry &attribute : device.smart.attributes) {
        require(attribute.id >= 1 && attribute.id <= 255 && attribute.raw < quint64(1) << 48);
        require(attribute.current <= 255 && attribute.worst <= 255 && attribute.threshold <= 255);
        require(attribute.notPrefailure + (attribute.flags & 1U) == 1 && attribute.flagBit2 <= 1);
    }
    const DriveRating rating = rateDrive(device, Settings());
    require(rating.level >= level::kFine && rating.level <= level::kCritical);
    require(rating.health >= 0 && rating.health <= 100);
    require((rating.level == level::kFine) == rating.detail.isEmpty());
}

} // namespace

/// Input: data and thresholds, either of which may be short; a repeated read of the same data; a later read
/// of other bytes.
void fuzz(const QByteArray &bytes)
{
    const SmartSectors sectors{bytes.left(ata::kSectorSize), bytes.mid(ata::kSectorSize, ata::kSectorSize)};
    const int attributeCount = usedSlots(sectors.data);
    DeviceRecord device;
    smart_sectors::applyFullRead(device, sectors);
    checkRecord(device, attributeCount);
    require(device.smart.temperature >= 0 && device.smart.temperature <= 6553);

    const DeviceRecord first = device;
    smart_sectors::applySynchronousRead(device, ByteView(sectors.data));
    require(device.smart.temperature == first.smart.temperature &&
            std::equal(device.smart.attributes.begin(), device.smart.attributes.end(),
                       first.smart.attributes.begin(), first.smart.attributes.end(),
                       [](const AttributeEntry &a, const AttributeEntry &b) {
                           return a.raw == b.raw && a.current == b.current;
                       }));

    smart_sectors::applySynchronousRead(device, ByteView(sectors.thresholds));
    checkRecord(device, attributeCount);
}
