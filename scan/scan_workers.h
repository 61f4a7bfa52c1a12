// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "platform/drives.h"
#include "scan/scan_request.h"

#include <QStringList>

#include <chrono>
#include <memory>
#include <vector>

class scan_tread;

/// Block sizes that a scan may have, in bytes.
inline constexpr qint32 kMinScanBlockSize = 512;
inline constexpr qint32 kMaxScanBlockSize = 64 * 1024 * 1024;

/// One scan_tread a device, in the order of the device list. Event loop's thread only.
class ScanWorkers
{
public:
    /// How long a stop waits for the blocks in hand, and then for their reads to be cut off.
    struct Patience
    {
        std::chrono::milliseconds beforeCancel{2000};
        std::chrono::milliseconds afterCancel{3000};
    };

    /// `drives` must live as long as any worker runs, those left behind included.
    explicit ScanWorkers(DriveSystem &drives);
    ScanWorkers(DriveSystem &drives, Patience patience);
    ~ScanWorkers();
    ScanWorkers(const ScanWorkers &) = delete;
    ScanWorkers &operator=(const ScanWorkers &) = delete;

    /// Makes a worker for each of the drives' paths. Any that there were are stopped and discarded.
    void create(const QStringList &paths);

    /// False for a device that is not there.
    [[nodiscard]] bool isRunning(int device) const;

    /// False, with nothing changed, when the device is not there or is being scanned, the first sector lies
    /// beyond the last or below 0, or the block size is out of its range.
    bool start(const ScanRequest &request);

    /// Asks the device's scan to end after the block in hand; false for a device that is not there.
    bool requestStop(int device);

    /// Stops every scan, waits until they have ended, publishes how far they came and discards the workers.
    /// False when a drive does not let go of its request in time: its worker is left behind and runs until
    /// the drive answers, or the process ends without it.
    [[nodiscard]] bool stopAll(DeviceList &devices);

    /// Puts the scans' progress into the records of their devices; a device that was not scanned since
    /// create() keeps what its record has.
    void publish(DeviceList &devices) const;

private:
    [[nodiscard]] scan_tread *worker(int device) const;
    bool stopAndWait();
    [[nodiscard]] bool waitForAll(std::chrono::milliseconds patience) const;
    void discardAll();

    DriveSystem &m_drives;
    const Patience m_patience;
    std::vector<std::unique_ptr<scan_tread>> m_workers;
};
