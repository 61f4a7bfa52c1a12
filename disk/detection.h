// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "platform/drives.h"

#include <optional>

namespace detection {

/// The record of physical drive `number`; nullopt unless it is there, answers for its geometry, partition and
/// device number, and is a fixed disk. What else it does not answer stays as a fresh record has it.
[[nodiscard]] std::optional<DeviceRecord> probe(DriveSystem &drives, int number);

/// All fixed disks, by probing numbers 0 to 98.
[[nodiscard]] DeviceList detect(DriveSystem &drives);

/// How many fixed disks there are among numbers 0 to 25, by their geometry alone.
[[nodiscard]] int countFixedDrives(DriveSystem &drives);

} // namespace detection
