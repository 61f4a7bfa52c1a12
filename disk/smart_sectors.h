// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "platform/bytes.h"

#include <QByteArray>

/// What a S.M.A.R.T. read brings: ata::kSectorSize bytes each. The thresholds are all zero where the drive's
/// access method has none.
struct SmartSectors
{
    QByteArray data;
    QByteArray thresholds;
};

namespace smart_sectors {

/// Files a full read in the record. Attributes are appended: the record comes with none.
void applyFullRead(DeviceRecord &device, const SmartSectors &sectors);

/// Brings a new data sector's current and raw values into the attributes that the last full read left, slot
/// by slot; all else stays as that read set it.
void applySynchronousRead(DeviceRecord &device, ByteView data);

} // namespace smart_sectors
