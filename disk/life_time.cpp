// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/life_time.h"

qint32 life_time::unitFromSize(quint64 raw)
{
    // More than five years, if these were hours: minutes then.
    constexpr quint64 kTooManyHours = 44000;
    return raw >= kTooManyHours ? 2 : 1;
}

qint32 life_time::unitFromAdvance(qint64 advance)
{
    if (advance < 2)
        return 1;
    if (advance < 4)
        return 2;
    return advance < 11 ? 3 : 4;
}

void life_time::classify(DeviceList &devices)
{
    for (DeviceRecord &device : devices) {
        if (device.smartState < 1 || device.lifeTimeUnit == 0)
            continue;
        device.lifeTimeUnit = unitFromAdvance(qint64(device.powerOnRaw - device.powerOnRawLast));
        device.lifeTimeDetected = true;
    }
}
