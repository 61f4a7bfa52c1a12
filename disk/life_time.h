// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"

/// The speed class of a drive's power-on counter (attribute 9), whose unit differs between makers:
/// DeviceRecord::lifeTimeUnit.
namespace life_time {

/// A first guess by the counter's size.
[[nodiscard]] qint32 unitFromSize(quint64 raw);

/// By how far the counter moved in 130 seconds; it may have gone backwards.
[[nodiscard]] qint32 unitFromAdvance(qint64 advance);

/// Classes every drive that has the attribute by its advance from the last full read to the last read of all.
void classify(DeviceList &devices);

} // namespace life_time
