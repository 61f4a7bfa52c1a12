// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"

/// The progress of a running scan, or the result of the latest one.
struct ScanProgress
{
    qint32 error = 0; ///< 1 when the disk could not be opened
    qint32 percent = 0;
    quint64 first = 0;
    quint64 current = 0; ///< the last sector handled
    QDateTime time;      ///< of the start, then of the end; invalid before the disk is open
    QVector<SectorRange> badRanges;
};

/// One range for each failed block, up to kMaxBadRanges. After that a block directly after the last range
/// extends it, and others are not listed.
void addBadRange(QVector<SectorRange> &ranges, const SectorRange &block);

/// Stores a scan's progress in its device's record.
void applyProgress(const ScanProgress &progress, DeviceRecord &device);
