// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"
#include "scan/scan_loop.h"
#include "scan/scan_progress.h"

#include <QMutex>
#include <QThread>

#include <atomic>
#include <optional>

/// Reads a drive's surface on a thread of its own, again and again as it is told to. It takes its range when
/// it starts, touches no record, and publishes how far it is under a lock of its own. All public functions
/// are for the thread that owns it. Not to be destroyed while it runs.
class scan_tread : public QThread
{
    Q_OBJECT

public:
    static constexpr qint32 kDefaultBlockSize = 65536; ///< bytes

    /// `drives` must live as long as the thread runs.
    scan_tread(DriveSystem &drives, qint32 deviceIndex, QString devicePath, QObject *parent = nullptr);

    [[nodiscard]] qint32 deviceIndex() const { return m_deviceIndex; }
    [[nodiscard]] QString devicePath() const { return m_devicePath; }

    /// Starts a run over `range`, whose first sector is not beyond its last, in blocks of `blockSize` bytes,
    /// at least a sector. Only while no run is under way.
    void startScan(const SectorRange &range, qint32 blockSize = kDefaultBlockSize);

    /// The run ends after the block in hand.
    void requestStop();

    /// For a stop that must not wait for the block in hand: cuts off its read, as far as the system can.
    void cancelRead();

    /// This moment of the run under way, or the end of the last one; nullopt before the first.
    [[nodiscard]] std::optional<ScanProgress> progress() const;

    /// Of the last run to end.
    [[nodiscard]] ScanTotals totals() const;

protected:
    void run() override;

private:
    void scan(Drive &drive);
    void fail(quint32 error);
    void publishTime();
    void publishBlock(const ScanBlock &block);
    void setDriveInHand(Drive *drive);

    DriveSystem &m_drives;
    const qint32 m_deviceIndex;
    const QString m_devicePath;

    // Set between runs only.
    qint32 m_blockSize = kDefaultBlockSize;
    quint64 m_firstSector = 0;
    quint64 m_lastSector = 0;

    std::atomic<bool> m_stopRequested{false};

    mutable QMutex m_progressMutex; ///< guards the two below
    std::optional<ScanProgress> m_progress;
    ScanTotals m_totals;

    QMutex m_driveMutex; ///< guards the two below; held over Drive::cancel()
    Drive *m_driveInHand = nullptr;
    bool m_cancelled = false;
};
