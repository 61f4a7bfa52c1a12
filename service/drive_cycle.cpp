// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/drive_cycle.h"

#include "disk/life_time.h"
#include "disk/volume_enumeration.h"
#include "monitor/health.h"
#include "service/logging.h"

#include <memory>
#include <utility>

namespace {

/// Calls `done` at the `count`th call.
std::function<void()> after(int count, std::function<void()> done)
{
    return [left = std::make_shared<int>(count), done = std::move(done)] {
        if (--*left == 0)
            done();
    };
}

} // namespace

DriveCycle::DriveCycle(DriveSystem &drives, VolumeSystem &volumes, Workers &workers, bool leavesAsleep,
                       Delays delays, QObject *parent)
    : QObject(parent)
    , m_inventory(drives, workers, leavesAsleep)
    , m_volumes(volumes, workers)
{
    connect(&m_inventory, &ATA_Smart::finishedScanSMART, this, &DriveCycle::endDetectionPart);
    m_countTimer.setSingleShot(true);
    m_countTimer.setInterval(delays.count);
    connect(&m_countTimer, &QTimer::timeout, this, &DriveCycle::countDue);
    m_lifeTimeTimer.setSingleShot(true);
    m_lifeTimeTimer.setInterval(delays.lifeTime);
    connect(&m_lifeTimeTimer, &QTimer::timeout, this, &DriveCycle::lifeTimeDue);
}

void DriveCycle::detect()
{
    if (isDetecting())
        return;
    m_detectionParts = 2; // the drives and the volumes
    m_isPolling = false;
    m_isCounting = false;
    m_lifeTimeTimer.stop();
    m_inventory.detectDevices();
    m_volumes.read([this](const VolumeList &volumes) {
        m_detectedVolumes = volumes;
        endDetectionPart();
    });
}

void DriveCycle::endDetectionPart()
{
    if (--m_detectionParts > 0)
        return;
    volume_enumeration::assign(m_detectedVolumes, devices());
    Q_EMIT detected();
    m_lifeTimeTimer.start();
    endRefreshes(); // those that the detection has interrupted: it has read all they asked for
    if (m_inventory.hasUnreadDrives())
        pollDrives();
}

void DriveCycle::pollDrives()
{
    if (!std::exchange(m_isPolling, true))
        readDrives([this] { m_isPolling = false; });
}

void DriveCycle::pollVolumes()
{
    if (!std::exchange(m_isPollingVolumes, true))
        readVolumes([this] { m_isPollingVolumes = false; });
}

void DriveCycle::refresh(Completion finished)
{
    const int number = ++m_lastRefresh;
    m_refreshes[number] = std::move(finished);
    const auto partEnded = after(2, [this, number] {
        const auto refresh = m_refreshes.find(number); // gone if a detection came in between
        if (refresh == m_refreshes.end())
            return;
        const Completion completion = std::move(refresh->second);
        m_refreshes.erase(refresh);
        completion();
    });
    readDrives(partEnded);
    readVolumes(partEnded);
}

void DriveCycle::endRefreshes()
{
    for (const auto &[number, finished] : std::exchange(m_refreshes, {}))
        finished();
}

void DriveCycle::readDrives(const Completion &done)
{
    m_inventory.readDrives(false, [this, done](const ATA_Smart::Readings &readings) {
        keepPreviousValues(devices());
        m_inventory.apply(readings);
        Q_EMIT polled();
        qCInfo(lcService, "Update SMART info finished");
        done();
    });
}

void DriveCycle::readVolumes(const Completion &done)
{
    m_volumes.read([this, done](const VolumeList &volumes) {
        volume_enumeration::assign(volumes, devices());
        qCInfo(lcService, "Update Volume info finished");
        done();
    });
}

void DriveCycle::detectLifeTimes()
{
    m_inventory.readDrives(true, [this](const ATA_Smart::Readings &readings) {
        m_inventory.apply(readings);
        life_time::classify(devices());
        qCInfo(lcService, "Detecting life time info finished");
    });
}

void DriveCycle::scheduleCount()
{
    if (!m_countTimer.isActive())
        m_countTimer.start();
}

void DriveCycle::countDrives()
{
    if (isDetecting() || m_isCounting) {
        m_countTimer.start();
        return;
    }
    m_isCounting = true;
    m_inventory.countDrives([this](int present, bool changed) {
        m_isCounting = false;
        qCInfo(lcService, "processCommand timer %d %d", devices().size(), present);
        if (changed)
            Q_EMIT countChanged();
    });
}
