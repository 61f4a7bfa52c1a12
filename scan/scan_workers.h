// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/workers.h"
#include "scan/scan_progress.h"
#include "scan/scan_request.h"

#include <QObject>

#include <map>

class scan_tread;

/// The surface scans in progress, at most one per device. Event loop's thread only.
class ScanWorkers : public QObject
{
    Q_OBJECT

public:
    /// `drives` outlives every thread of `workers`.
    ScanWorkers(DriveSystem &drives, Workers &workers, QObject *parent = nullptr);

    [[nodiscard]] bool isRunning(int device) const { return m_scans.count(device) > 0; }

    /// Starts a scan of request.device, whose record is `device`. Does nothing and returns false if a scan of
    /// the device is running, the range is empty or negative, or the block size is out of range.
    bool start(const ScanRequest &request, const DeviceRecord &device);

    /// Asks the device's scan, if there is one, to end after the block in progress.
    void requestStop(int device);

    /// Asks all scans to end and forgets them.
    void abandonAll();

    /// Stores the progress of the running scans in the records of their devices.
    void publish(DeviceList &devices) const;

Q_SIGNALS:
    /// Emitted when a scan has ended: at its last sector, by requestStop(), or because the drive does not
    /// answer.
    void ended(int device, const ScanProgress &result);

private:
    struct Scan
    {
        int work;           ///< number in m_workers
        scan_tread *thread; ///< owned by m_workers; valid while the scan is listed here
    };

    void end(int device, WorkEnd how);

    DriveSystem &m_drives;
    Workers &m_workers;
    std::map<int, Scan> m_scans; ///< by device
};
