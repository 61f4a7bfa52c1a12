// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/scan_progress.h"

void addBadRange(QVector<SectorRange> &ranges, const SectorRange &block)
{
    if (ranges.size() < kMaxBadRanges)
        ranges.append(block);
    else if (ranges.last().last + 1 == block.first)
        ranges.last().last = block.last;
}

void applyProgress(const ScanProgress &progress, DeviceRecord &device)
{
    device.scanError = progress.error;
    device.scanPercent = progress.percent;
    device.scanFirst = progress.first;
    device.scanCurrent = progress.current;
    if (progress.time.isValid())
        device.scanTime = progress.time;
    device.badRanges = progress.badRanges;
}
