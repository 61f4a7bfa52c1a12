// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "disk/smart_thread.h"
#include "disk/smart_timer.h"
#include "platform/drives.h"

#include <QDeadlineTimer>
#include <QObject>
#include <QSet>

#include <chrono>
#include <memory>
#include <optional>
#include <vector>

/// The inventory of fixed disks and the reading of their S.M.A.R.T. data. Lives on the event loop's thread,
/// which alone touches the records.
class ATA_Smart : public QObject
{
    Q_OBJECT

public:
    /// How long a drive may take to bring its sectors before it is given up.
    static constexpr std::chrono::milliseconds kReadLimit{20000};
    /// The same at a synchronous read, which holds everything up, when the last one has given the drive up.
    static constexpr std::chrono::milliseconds kSecondReadLimit{2000};
    /// How long cancelled readers get to end before they are left behind.
    static constexpr std::chrono::milliseconds kEndLimit{2000};

    /// `drives` outlives this object and every thread that it leaves behind.
    explicit ATA_Smart(DriveSystem &drives, QObject *parent = nullptr);
    ~ATA_Smart() override; ///< does what endReaders() does

    [[nodiscard]] DeviceList &devices() { return m_devices; }

    /// Fills the device list afresh. Readers of the former list are ended first, without finishedScanSMART().
    void detectDevices();

    /// How many fixed disks are there now, whatever the device list says.
    [[nodiscard]] int countFixedDrives();

    /// Reads all drives at once, each on its own thread, into records that have no attributes yet. Ends in
    /// finishedScanSMART(), from the event loop, also when there is no drive.
    void startReaders();

    /// Reads one drive after another and returns when all are done or given up. Skips drives whose last full
    /// read gave nothing and, unless `force` is set, those that are not monitored.
    void readSynchronously(bool force);

    /// Cancels the readers under way, drops what they bring and waits for them to end, kEndLimit in all.
    void endReaders();

    /// Whether a thread still hangs in a request that cannot be cut off. Asked after endReaders() it tells
    /// that the process has to leave without destroying the drives.
    [[nodiscard]] bool leftThreadsBehind() const;

    void setTimeLimits(std::chrono::milliseconds read, std::chrono::milliseconds end);

Q_SIGNALS:
    void finishedScanSMART(); ///< every reader is done or given up

public Q_SLOTS:
    void terminate_S_thread(int i); ///< gives reader i up and counts it as done
    void S_thread_terminated();     ///< counts one reader as done
    void finishedReadSMART(int i);  ///< files what reader i brought and counts it as done
    void stopTimer(int i);

private:
    struct Reader
    {
        std::unique_ptr<SMART_thread> thread;
        SMART_timer *watchdog = nullptr; ///< a child of the inventory
        bool isDone = false;
    };

    void startReader(int index);
    [[nodiscard]] Reader *readerUnderWay(int index);
    [[nodiscard]] std::optional<SmartSectors> readNow(int index);
    [[nodiscard]] bool isHung(const QString &path) const;
    void letGo(std::unique_ptr<SMART_thread> thread, QDeadlineTimer deadline);

    DriveSystem &m_drives;
    DeviceList m_devices;
    std::vector<Reader> m_readers; ///< one for each drive, in the device list's order
    int m_runningReaders = 0;
    int m_generation = 0; ///< counts the full reads: a signal of an earlier one's reader means nothing
    std::vector<std::unique_ptr<SMART_thread>> m_leftBehind;
    QSet<QString> m_givenUp; ///< paths of drives that the last synchronous read has not waited for
    std::chrono::milliseconds m_readLimit = kReadLimit;
    std::chrono::milliseconds m_endLimit = kEndLimit;
};
