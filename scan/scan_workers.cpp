// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/scan_workers.h"

#include "scan/logging.h"
#include "scan/scan_tread.h"

#include <QDeadlineTimer>

#include <algorithm>

ScanWorkers::ScanWorkers(DriveSystem &drives)
    : ScanWorkers(drives, Patience())
{}

ScanWorkers::ScanWorkers(DriveSystem &drives, Patience patience)
    : m_drives(drives)
    , m_patience(patience)
{}

ScanWorkers::~ScanWorkers()
{
    stopAndWait();
    discardAll();
}

void ScanWorkers::create(const QStringList &paths)
{
    stopAndWait();
    discardAll();
    m_workers.reserve(std::size_t(paths.size()));
    for (int i = 0; i < paths.size(); ++i)
        m_workers.push_back(std::make_unique<scan_tread>(m_drives, i, paths[i]));
}

bool ScanWorkers::isRunning(int device) const
{
    const scan_tread *found = worker(device);
    return found && found->isRunning();
}

bool ScanWorkers::start(const ScanRequest &request)
{
    scan_tread *found = worker(request.device);
    if (!found || found->isRunning())
        return false;
    if (request.firstSector < 0 || request.firstSector > request.lastSector)
        return false;
    if (request.blockSize < kMinScanBlockSize || request.blockSize > kMaxScanBlockSize)
        return false;
    found->startScan({quint64(request.firstSector), quint64(request.lastSector)}, request.blockSize);
    return true;
}

bool ScanWorkers::requestStop(int device)
{
    scan_tread *found = worker(device);
    if (found)
        found->requestStop();
    return found != nullptr;
}

bool ScanWorkers::stopAll(DeviceList &devices)
{
    const bool ended = stopAndWait();
    publish(devices);
    discardAll();
    return ended;
}

void ScanWorkers::publish(DeviceList &devices) const
{
    const int count = std::min(int(m_workers.size()), devices.size());
    for (int i = 0; i < count; ++i) {
        if (const auto progress = m_workers[std::size_t(i)]->progress())
            applyProgress(*progress, devices[i]);
    }
}

scan_tread *ScanWorkers::worker(int device) const
{
    const bool exists = device >= 0 && device < int(m_workers.size());
    return exists ? m_workers[std::size_t(device)].get() : nullptr;
}

bool ScanWorkers::stopAndWait()
{
    for (const auto &each : m_workers)
        each->requestStop();
    if (waitForAll(m_patience.beforeCancel))
        return true;
    for (const auto &each : m_workers)
        each->cancelRead();
    return waitForAll(m_patience.afterCancel);
}

bool ScanWorkers::waitForAll(std::chrono::milliseconds patience) const
{
    const QDeadlineTimer deadline(patience);
    return std::all_of(m_workers.begin(), m_workers.end(),
                       [&deadline](const auto &each) { return each->wait(deadline); });
}

/// All have been told to stop.
void ScanWorkers::discardAll()
{
    for (auto &each : m_workers) {
        if (!each->isRunning())
            continue;
        // A thread in the middle of a request must not be destroyed; it goes when the request comes back.
        scan_tread *leftBehind = each.release();
        qCWarning(lcScan) << "the scan of" << leftBehind->devicePath() << "does not end and is left behind";
        QObject::connect(leftBehind, &QThread::finished, leftBehind, &QObject::deleteLater);
        if (leftBehind->isFinished()) // the request came back in between
            leftBehind->deleteLater();
    }
    m_workers.clear();
}
