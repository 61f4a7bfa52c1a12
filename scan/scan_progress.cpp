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
    const QDateTime formerTime = device.scan.time;
    device.scan = progress;
    if (!progress.time.isValid())
        device.scan.time = formerTime;
}
