// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/smart_sectors.h"
#include "platform/system_error.h"

#include <optional>

/// What one read of a drive returned, in whole or up to the request that failed or did not return.
struct DriveReading
{
    bool isFixedDisk = false;            ///< by its geometry; only if the drive was to be identified
    std::optional<DetectedDrive> device; ///< a fixed disk that can be listed; the same
    std::optional<SmartSectors> sectors;
    quint32 error = system_error::kNone; ///< of the request that ended the read
    bool isAsleep = false;               ///< in standby, and left so
};
