// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"

/// How far a scan has come, or came.
struct ScanProgress
{
    qint32 error = 0; ///< 1 when the disk could not be opened
    qint32 percent = 0;
    quint64 first = 0;
    quint64 current = 0; ///< the last sector handled
    QDateTime time;      ///< when it started, then when it ended; not valid before the disk is open
    QVector<SectorRange> badRanges;
};

/// One range a failed block, until there are kMaxBadRanges; from then on a block right behind the last range
/// makes that one longer, and others go unlisted.
void addBadRange(QVector<SectorRange> &ranges, const SectorRange &block);

/// Puts a scan's progress into its device's record.
void applyProgress(const ScanProgress &progress, DeviceRecord &device);
