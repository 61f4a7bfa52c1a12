// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/scan_workers.h"

#include "scan/logging.h"
#include "scan/scan_tread.h"

#include <memory>
#include <utility>

ScanWorkers::ScanWorkers(DriveSystem &drives, Workers &workers, QObject *parent)
    : QObject(parent)
    , m_drives(drives)
    , m_workers(workers)
{}

bool ScanWorkers::start(const ScanRequest &request, const DeviceRecord &device)
{
    if (isRunning(request.device) || request.firstSector < 0 || request.firstSector > request.lastSector)
        return false;
    if (request.blockSize < kMinScanBlockSize || request.blockSize > kMaxScanBlockSize)
        return false;
    auto worker = std::make_unique<scan_tread>(m_drives, device, request);
    scan_tread *const thread = worker.get();
    const int work = m_workers.start(std::move(worker), m_workers.limits().scanBlock,
                                     [this, index = request.device](int, WorkEnd how) { end(index, how); });
    m_scans[request.device] = {work, thread};
    return true;
}

void ScanWorkers::requestStop(int device)
{
    const auto scan = m_scans.find(device);
    if (scan == m_scans.end())
        return;
    scan->second.thread->requestStop();
    m_workers.setLimit(scan->second.work, m_workers.limits().request);
}

void ScanWorkers::abandonAll()
{
    for (const auto &[device, scan] : std::exchange(m_scans, {})) {
        m_workers.abandon(scan.work);
        m_workers.setLimit(scan.work, m_workers.limits().stop);
    }
}

void ScanWorkers::publish(DeviceList &devices) const
{
    for (const auto &[device, scan] : m_scans)
        applyProgress(scan.thread->progress(), devices[device]);
}

void ScanWorkers::end(int device, WorkEnd how)
{
    const auto scan = m_scans.find(device);
    const QString path = scan->second.thread->subject();
    ScanProgress result = scan->second.thread->progress();
    m_scans.erase(scan);
    if (how == WorkEnd::Hung)
        result.hasOpenFailed = true;
    if (how != WorkEnd::Done)
        qCWarning(lcScan) << "the scan of" << path << "ends: the drive does not answer";
    Q_EMIT ended(device, result);
}
