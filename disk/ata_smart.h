// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/fault_log.h"
#include "disk/smart_thread.h"
#include "disk/workers.h"

#include <QDeadlineTimer>
#include <QObject>

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <vector>

/// The inventory of fixed disks and the reading of their identity and S.M.A.R.T. data. All drives are read at
/// the same time, each on a thread of its own, so that drives that hang cost one time limit together. Event
/// loop's thread only; it alone touches the records.
class ATA_Smart : public QObject
{
    Q_OBJECT

public:
    /// By place in the device list; nullopt for a drive that was not to be read.
    using Readings = std::vector<std::optional<DriveReading>>;

    /// `drives` outlives this object and every thread of `workers`. With `leavesAsleep` a poll reads nothing
    /// from a drive in standby.
    ATA_Smart(DriveSystem &drives, Workers &workers, bool leavesAsleep = false, QObject *parent = nullptr);

    [[nodiscard]] DeviceList &devices() { return m_devices; }
    [[nodiscard]] const DeviceList &devices() const { return m_devices; }

    /// Abandons all reads in progress, without a call of their `done`; then detects the drives and reads
    /// their S.M.A.R.T. data. Replaces the device list right before finishedScanSMART().
    void detectDevices();

    /// Reads the S.M.A.R.T. data of the drives whose last full read returned attributes. Unless `force` is
    /// set, skips drives that are not monitored, and identifies and reads in full those that were never read.
    void readDrives(bool force, std::function<void(const Readings &)> done);

    /// Stores what readDrives() returned and logs which drives started or stopped failing.
    void apply(const Readings &readings);

    /// Passes the number of fixed disks among the first detection::kCountedNumbers, and whether they differ
    /// in number or identity from the device list. A drive that does not answer counts as unchanged.
    void countDrives(std::function<void(int present, bool changed)> done);

    /// Returns whether the detection ended before it could read a drive that is read by its place in the
    /// list.
    [[nodiscard]] bool hasUnreadDrives() const;

Q_SIGNALS:
    void finishedScanSMART(); ///< the detection is complete

public Q_SLOTS:
    void terminate_S_thread(int i); ///< abandons reader i and keeps what it has read so far
    void S_thread_terminated();     ///< counts one reader of the detection as done
    void finishedReadSMART(int i);  ///< passes on what reader i has read
    void stopTimer(int i);

private:
    using Done = std::function<void(const DriveReading &)>;

    struct Reader
    {
        SMART_thread *thread = nullptr; ///< owned by m_workers; valid until the reader is done
        std::vector<Done> done;         ///< of all that share the read
    };

    void startReader(const SmartRead &read, Done done, std::chrono::milliseconds limit);
    void readAll(const std::vector<std::optional<SmartRead>> &reads,
                 std::function<void(const Readings &)> done);
    void finishReader(int reader, WorkEnd end);
    void abandonReaders();
    [[nodiscard]] std::optional<SmartRead> readOf(int index, bool force) const;
    void applyReading(DeviceRecord &device, const DriveReading &reading);
    void listFoundDrives();
    void listDrive(const DriveReading &reading);
    [[nodiscard]] const DeviceRecord *listed(int probeNumber) const;
    [[nodiscard]] bool areSameDrives(const Readings &probes) const;

    DriveSystem &m_drives;
    Workers &m_workers;
    const bool m_leavesAsleep;
    DeviceList m_devices;
    FaultLog m_faults;
    std::map<int, Reader> m_readers; ///< by the number of their work
    int m_runningReaders = 0;        ///< of the detection
    QDeadlineTimer m_deadline;       ///< of the detection
    Readings m_found;                ///< by probe number, while a detection looks for drives
    DeviceList m_detected;           ///< the new list, until the detection is complete
};
