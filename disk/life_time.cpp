// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/life_time.h"

using Unit = PowerOnCounter::Unit;

PowerOnCounter::Unit life_time::unitFromSize(quint64 raw)
{
    // As hours this would be more than five years, so the unit is minutes.
    constexpr quint64 kTooManyHours = 44000;
    return raw >= kTooManyHours ? Unit::Minutes : Unit::Hours;
}

PowerOnCounter::Unit life_time::unitFromAdvance(qint64 advance)
{
    if (advance < 2)
        return Unit::Hours;
    if (advance < 4)
        return Unit::Minutes;
    return advance < 11 ? Unit::HalfMinutes : Unit::Seconds;
}

void life_time::classify(DeviceList &devices)
{
    for (DeviceRecord &device : devices) {
        SmartValues &smart = device.smart;
        if (smart.fullRead != FullRead::Attributes || smart.powerOn.unit == Unit::Unknown)
            continue;
        smart.powerOn.unit = unitFromAdvance(qint64(quint64(smart.powerOn.raw) - smart.powerOnRawLast));
        smart.powerOn.isMeasured = true;
    }
}
