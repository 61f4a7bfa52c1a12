// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/ata_smart.h"
#include "disk/volume_reader.h"
#include "disk/workers.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <map>

/// The work on drives and volumes that recurs: detections, polls, refreshes, the life-time detection and the
/// drive count. A detection takes the place of everything else in progress. Owns the inventory. Event loop's
/// thread only; never blocks.
class DriveCycle : public QObject
{
    Q_OBJECT

public:
    using Completion = std::function<void()>;

    struct Delays
    {
        std::chrono::milliseconds count{500};
        std::chrono::milliseconds lifeTime{130000}; ///< after a detection
    };

    /// `drives`, `volumes` and `workers` outlive this object. With `leavesAsleep` a poll reads nothing from a
    /// drive in standby.
    DriveCycle(DriveSystem &drives, VolumeSystem &volumes, Workers &workers, bool leavesAsleep, Delays delays,
               QObject *parent = nullptr);

    [[nodiscard]] DeviceList &devices() { return m_inventory.devices(); }
    [[nodiscard]] const DeviceList &devices() const { return m_inventory.devices(); }
    [[nodiscard]] bool isDetecting() const { return m_detectionParts > 0; }

    /// Starts a detection of the drives and volumes, which ends with detected(). Drops all reads in progress.
    /// Does nothing while a detection runs.
    void detect();

    /// Reads all drives, or all volumes, unless the last such poll is still running.
    void pollDrives();
    void pollVolumes();

    /// Reads drives and volumes and calls `finished`. A detection in between reads them instead.
    void refresh(Completion finished);

    /// Reads all drives and classifies the speed of their power-on counters.
    void detectLifeTimes();

    /// Emits countDue() 500 ms from now. Further calls in the meantime change nothing.
    void scheduleCount();

    /// Counts the drives, and detects them if one came, went or was swapped. Waits for a detection or a count
    /// in progress, so that no change is missed.
    void countDrives();

Q_SIGNALS:
    void detected();     ///< the device list is new; its volumes are assigned
    void polled();       ///< the records hold what the drives returned
    void countChanged(); ///< the drives differ from the device list
    void lifeTimeDue();  ///< once: so long after a detection that power-on counters have advanced
    void countDue();

private:
    void endDetectionPart();
    void readDrives(const Completion &done);
    void readVolumes(const Completion &done);
    void endRefreshes();

    ATA_Smart m_inventory;
    VolumeReader m_volumes;
    QTimer m_countTimer;
    QTimer m_lifeTimeTimer;
    VolumeList m_detectedVolumes; ///< by the latest detection
    int m_detectionParts = 0;     ///< that a detection still waits for
    bool m_isPolling = false;     ///< drives, by pollDrives()
    bool m_isPollingVolumes = false;
    bool m_isCounting = false;
    std::map<int, Completion> m_refreshes; ///< in progress, in the order of their start
    int m_lastRefresh = 0;
};
