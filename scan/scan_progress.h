// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"

/// One range for each failed block, up to kMaxBadRanges. After that a block directly after the last range
/// extends it, and others are not listed.
void addBadRange(QVector<SectorRange> &ranges, const SectorRange &block);

/// Stores a scan's progress in its device's record.
void applyProgress(const ScanProgress &progress, DeviceRecord &device);
