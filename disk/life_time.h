// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"

/// The unit of a drive's power-on counter (attribute 9), which differs between makers.
namespace life_time {

/// Infers the unit from the counter's value.
[[nodiscard]] PowerOnCounter::Unit unitFromSize(quint64 raw);

/// Infers the unit from the counter's advance in 130 seconds, which may be negative.
[[nodiscard]] PowerOnCounter::Unit unitFromAdvance(qint64 advance);

/// Measures the unit of every drive that has the attribute, by the advance between its latest full read and
/// its latest read.
void classify(DeviceList &devices);

} // namespace life_time
