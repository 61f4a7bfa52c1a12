// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/volume_entry.h"
#include "platform/volumes.h"

namespace volume_enumeration {

/// Returns the machine's fixed volumes in the system's order, with their names and roots. May block.
[[nodiscard]] VolumeList list(VolumeSystem &volumes);

/// Returns a listed volume with its space, label, file system, serial and disk. May block while its drive
/// does not answer.
[[nodiscard]] VolumeEntry describe(VolumeSystem &volumes, VolumeEntry listed);

/// Replaces every drive's volumes by copies of those in `volumes` that lie on it. A volume goes to the first
/// drive with its device number, or to none.
void assign(const VolumeList &volumes, DeviceList &devices);

} // namespace volume_enumeration
