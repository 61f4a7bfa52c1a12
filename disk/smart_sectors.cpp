// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_sectors.h"

#include "disk/life_time.h"
#include "platform/smart_layout.h"
#include "wire/attribute_catalogue.h"

#include <algorithm>

namespace {

namespace layout = smart_layout;

constexpr quint32 kPowerOnTime = 9;
constexpr quint32 kTemperature = 194;

ByteView slotAt(ByteView sector, int number)
{
    return sector.mid(layout::slotOffset(number), layout::kSlotSize);
}

/// Returns whole degrees from the low word; many drives keep extremes in the bytes above it. A value that no
/// drive survives counts tenths.
quint64 degrees(quint16 reported)
{
    return reported > 100 ? reported / 10U : reported;
}

quint64 rawValue(ByteView entry)
{
    if (entry.u8(layout::kId) == kTemperature)
        return degrees(entry.le16(layout::kRaw));
    return entry.le32(layout::kRaw) | quint64(entry.le16(layout::kRaw + 4)) << 32;
}

AttributeEntry parseEntry(ByteView entry, ByteView threshold)
{
    AttributeEntry attribute;
    attribute.id = entry.u8(layout::kId);
    attribute.name = attribute_catalogue::name(qint32(attribute.id));
    attribute.description = attribute_catalogue::description(qint32(attribute.id));
    attribute.raw = rawValue(entry);
    attribute.current = entry.u8(layout::kCurrent);
    attribute.worst = entry.u8(layout::kWorst);
    attribute.threshold = threshold.u8(layout::kThreshold);
    attribute.flags = entry.le16(layout::kFlags);
    attribute.notPrefailure = ~attribute.flags & 1U;
    attribute.flagBit2 = attribute.flags >> 2 & 1U;
    return attribute;
}

/// Copies the values that other parts of the service use most.
void noteAttribute(SmartValues &smart, const AttributeEntry &attribute)
{
    if (attribute.id == kTemperature) {
        smart.hasTemperature = true;
        smart.temperature = qint32(attribute.raw);
    } else if (attribute.id == kPowerOnTime) {
        if (smart.powerOn.unit == PowerOnCounter::Unit::Unknown)
            smart.powerOn.unit = life_time::unitFromSize(attribute.raw);
        smart.powerOn.raw = qint64(attribute.raw);
        smart.powerOnRawLast = attribute.raw;
    }
}

} // namespace

void smart_sectors::applyFullRead(DeviceRecord &device, const SmartSectors &sectors)
{
    const ByteView data(sectors.data);
    const ByteView thresholds(sectors.thresholds);
    SmartValues &smart = device.smart;
    smart.offlineStatus = data.u8(layout::kOfflineStatus);
    smart.offlineCapability = data.u8(layout::kOfflineCapability);
    smart.capability = data.le16(layout::kCapability);

    for (int i = 0; i < layout::kSlotCount && slotAt(data, i).u8(layout::kId) != 0; ++i) {
        smart.attributes.append(parseEntry(slotAt(data, i), slotAt(thresholds, i)));
        noteAttribute(smart, smart.attributes.constLast());
    }

    if (smart.attributes.isEmpty()) {
        smart.fullRead = FullRead::NoAttributes;
        device.smartEnabled = 0;
        return;
    }
    smart.fullRead = FullRead::Attributes;
    smart.attributeCount = smart.attributes.size();
    smart.previousTemperature = 0;
    smart.previousAttributes.clear();
}

void smart_sectors::applySynchronousRead(DeviceRecord &device, ByteView data)
{
    SmartValues &smart = device.smart;
    const int count = std::min(smart.attributes.size(), layout::kSlotCount);
    for (int i = 0; i < count; ++i) {
        AttributeEntry &attribute = smart.attributes[i];
        const ByteView entry = slotAt(data, i);
        attribute.current = entry.u8(layout::kCurrent);
        attribute.raw = rawValue(entry);
        if (attribute.id == kTemperature)
            smart.temperature = qint32(attribute.raw);
        else if (attribute.id == kPowerOnTime)
            smart.powerOn.raw = qint64(attribute.raw);
    }
}
