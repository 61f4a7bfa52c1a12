// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "platform/bytes.h"

#include <QByteArray>

/// The data of a S.M.A.R.T. read, ata::kSectorSize bytes each.
struct SmartSectors
{
    QByteArray data;
    QByteArray thresholds; ///< all zero if the drive does not report them; empty if they were not read
};

namespace smart_sectors {

/// Stores a full read in the record, which has no attributes yet.
void applyFullRead(DeviceRecord &device, const SmartSectors &sectors);

/// Stores the current and raw values of a new data sector in the attributes of the last full read, slot by
/// slot; everything else stays as that read set it.
void applySynchronousRead(DeviceRecord &device, ByteView data);

} // namespace smart_sectors
