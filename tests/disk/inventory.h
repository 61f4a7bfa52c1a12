// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/ata_smart.h"

#include <QSignalSpy>
#include <QTest>
#include <QTimer>

/// Runs the event loop until `isDone`; the test's time limit ends an endless wait. The timer ends each single
/// wait, because Windows may deliver an event without ending it.
template <typename Condition>
void runUntil(const Condition &isDone)
{
    QTimer wake;
    wake.start(5);
    while (!isDone())
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

/// An inventory with operations that wait for their result.
struct Inventory
{
    explicit Inventory(DriveSystem &drives, WorkLimits limits = {}, bool leavesAsleep = false)
        : workers(limits)
        , smart(drives, workers, leavesAsleep)
    {}

    const DeviceList &detect()
    {
        QSignalSpy finished(&smart, &ATA_Smart::finishedScanSMART);
        smart.detectDevices();
        runUntil([&] { return finished.count() == 1; });
        return smart.devices();
    }

    const DeviceList &poll(bool force = false)
    {
        bool isDone = false;
        smart.readDrives(force, [&](const ATA_Smart::Readings &readings) {
            smart.apply(readings);
            isDone = true;
        });
        runUntil([&] { return isDone; });
        return smart.devices();
    }

    struct Count
    {
        int present = -1;
        bool changed = false;
    };

    Count count()
    {
        Count result;
        smart.countDrives([&](int present, bool changed) { result = {present, changed}; });
        runUntil([&] { return result.present >= 0; });
        return result;
    }

    /// Waits for requests that have been cancelled or released: they use the drives until they return.
    void finish()
    {
        runUntil([this] { return !workers.isBusy(); });
    }

    Workers workers;
    ATA_Smart smart;
};
