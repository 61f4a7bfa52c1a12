// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "platform/drives.h"

#include <atomic>
#include <functional>

/// A block that has been read, or could not be.
struct ScanBlock
{
    SectorRange sectors;
    bool readable = false;
    qint32 percent = 0; ///< of the range, up to this block's end
};

/// Called during a run, on its own thread.
struct ScanHooks
{
    std::function<void(const ScanBlock &)> blockDone;
    std::function<void()> pause; ///< once in 50 MiB, so that the scan does not occupy the drive alone
};

/// The blocks in which a surface is read.
struct ScanBlocks
{
    qint32 size = 0; ///< bytes of a block, at least kScanSectorSize
    quint32 driveSector =
        kScanSectorSize; ///< bytes of the drive's own sectors; each read is extended to whole ones
};

/// Returns the drive's sector size as reported, or kScanSectorSize if it cannot be one.
[[nodiscard]] quint32 driveSectorSize(quint32 reported);

/// Returns the size of the buffer that scanSurface() needs.
[[nodiscard]] int scanBufferSize(const ScanBlocks &blocks);

/// Reads `range`, whose first sector is not beyond its last, from start to end in blocks of whole scan
/// sectors. A block that fails is reported and skipped. Ends after the block in progress when a stop is
/// requested; a block whose read was cancelled by that stop is not reported. Allocates nothing.
void scanSurface(Drive &drive, const SectorRange &range, const ScanBlocks &blocks, MutableBytes buffer,
                 const std::atomic<bool> &stopRequested, const ScanHooks &hooks);
