// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/worker.h"
#include "scan/scan_loop.h"
#include "scan/scan_progress.h"
#include "scan/scan_request.h"

#include <atomic>

/// One run over a drive's surface. It accesses no record and publishes its progress under a lock of its own.
class scan_tread : public DriveWorker
{
    Q_OBJECT

public:
    /// The range of `request` must not be empty, and its blocks must hold at least one sector.
    scan_tread(DriveSystem &drives, const DetectedDrive &device, const ScanRequest &request);

    /// Ends the run after the block in progress; its limit is not extended any more.
    void requestStop() override { m_stopRequested = true; }

    /// Also cancels the read of the block in progress, as far as the system can.
    void cancel() override;

    /// Returns whether a block has ended since the last call.
    [[nodiscard]] bool hasAdvanced() override;

    [[nodiscard]] bool runsBeside() const override { return true; }

    /// Returns the present progress; after the run its result. Any thread.
    [[nodiscard]] ScanProgress progress() const;

protected:
    void work(Drive *drive, quint32 openError) override;

private:
    void scan(Drive &drive);
    void fail(quint32 error);
    void publishTime();
    void publishBlock(const ScanBlock &block);

    const ScanRequest m_request;
    const ScanBlocks m_blocks;
    std::atomic<bool> m_stopRequested{false};
    std::atomic<bool> m_hasAdvanced{false};

    mutable QMutex m_mutex; ///< guards what follows
    ScanProgress m_progress;
};
