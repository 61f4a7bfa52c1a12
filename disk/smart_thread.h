// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/drive_reading.h"
#include "disk/worker.h"

#include <memory>
#include <mutex>

/// The order for one reader: the drive and the data to read from it.
struct SmartRead
{
    QString path;
    int index = 0;         ///< the reader's number in its signals: place in the list, or probe number
    int driveNumber = -1;  ///< sent with the S.M.A.R.T. drive-data request: the place in the device list.
                           ///< -1: not known yet, and a drive that needs it is not read
    bool identify = false; ///< first reads geometry and identity, which determine the access method
    int probeNumber = 0;   ///< N of the path; for identify
    AccessMethod method = AccessMethod::None; ///< unless `identify`
    bool data = true;
    bool thresholds = true;
    bool leaveAsleep = false; ///< reads nothing from a drive in standby
    std::shared_ptr<std::once_flag>
        rescan; ///< set: the first of the reads that share it looks for new drives
};

[[nodiscard]] bool operator==(const SmartRead &left, const SmartRead &right);

/// Reads one drive: its identity, its S.M.A.R.T. sectors, or both.
class SMART_thread : public DriveWorker
{
    Q_OBJECT

public:
    SMART_thread(DriveSystem &drives, SmartRead read);

    [[nodiscard]] const SmartRead &task() const { return m_read; }

    /// Returns what has been read so far. Any thread.
    [[nodiscard]] DriveReading reading() const;

Q_SIGNALS:
    void finishReadSMART(int index); ///< whether the read failed or not
    void needStopTimer(int index);

protected:
    void run() override;
    void work(Drive *drive, quint32 openError) override;

private:
    void read(Drive &drive, DriveReading &reading);
    [[nodiscard]] bool identify(Drive &drive, DriveReading &reading);
    void publish(const DriveReading &reading);

    const SmartRead m_read;

    mutable QMutex m_mutex;
    DriveReading m_reading; ///< guarded by m_mutex
};
