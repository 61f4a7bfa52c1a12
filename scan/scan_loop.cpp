// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/scan_loop.h"

#include <algorithm>
#include <limits>

namespace {

constexpr quint64 kAreaSectors = 102400; // 50 MiB, counted from the drive's start

/// First sector that cannot be read: offsets are signed 64-bit numbers in the systems' interfaces.
constexpr quint64 kSeekableSectors = quint64(std::numeric_limits<qint64>::max()) / quint64(kScanSectorSize);

SectorRange blockAt(quint64 first, quint64 last, quint64 sectorsPerBlock)
{
    return {first, first + std::min(sectorsPerBlock - 1, last - first)};
}

/// Reads a block, extended to whole sectors of the drive: it refuses any other read.
quint32 readBlock(Drive &drive, const SectorRange &block, quint64 driveSector, MutableBytes buffer)
{
    if (block.last >= kSeekableSectors)
        return system_error::kInvalidParameter;
    const quint64 first = block.first * kScanSectorSize / driveSector * driveSector;
    const quint64 needed = (block.last + 1) * kScanSectorSize - first;
    const quint64 length = (needed + driveSector - 1) / driveSector * driveSector;
    const ReadReply reply = drive.readAt(first, MutableBytes(buffer.data(), int(length)));
    if (!reply.ok())
        return reply.error;
    return quint64(reply.bytesRead) >= needed ? system_error::kNone : system_error::kHandleEof;
}

qint32 percentAt(quint64 sector, const SectorRange &range)
{
    if (range.first == range.last)
        return 100;
    const double step = 100.0 / double(range.last - range.first);
    return qint32(double(sector - range.first) * step);
}

} // namespace

quint32 driveSectorSize(quint32 reported)
{
    constexpr quint32 kLargest = 65536;
    const bool isPowerOfTwo = (reported & (reported - 1)) == 0;
    return reported > kScanSectorSize && reported <= kLargest && isPowerOfTwo ? reported : kScanSectorSize;
}

int scanBufferSize(const ScanBlocks &blocks)
{
    return blocks.size + 2 * int(blocks.driveSector); // a part of one at either end
}

void scanSurface(Drive &drive, const SectorRange &range, const ScanBlocks &blocks, MutableBytes buffer,
                 const std::atomic<bool> &stopRequested, const ScanHooks &hooks)
{
    const auto sectorsPerBlock = quint64(blocks.size / kScanSectorSize);
    quint64 area = range.first / kAreaSectors;
    for (quint64 sector = range.first;;) {
        const SectorRange block = blockAt(sector, range.last, sectorsPerBlock);
        const quint32 error = readBlock(drive, block, blocks.driveSector, buffer);
        const bool stopping = stopRequested;
        if (stopping && error == system_error::kOperationAborted)
            return;
        hooks.blockDone({block, error == system_error::kNone, percentAt(block.last, range)});
        if (block.last / kAreaSectors != area) {
            area = block.last / kAreaSectors;
            hooks.pause();
        }
        if (stopping || block.last == range.last)
            return;
        sector = block.last + 1;
    }
}
