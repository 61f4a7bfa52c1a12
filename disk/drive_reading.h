// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/smart_sectors.h"
#include "platform/system_error.h"

#include <optional>

/// The result of one read of a drive, complete or up to the request that failed or did not return.
struct DriveReading
{
    bool isFixedDisk = false;            ///< by its geometry; set only if the read identifies the drive
    std::optional<DetectedDrive> device; ///< a fixed disk that can be listed; also only then
    std::optional<SmartSectors> sectors;
    quint32 error = system_error::kNone; ///< of the request that ended the read
    bool isAsleep = false;               ///< in standby, and not woken
};
