// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/scan_tread.h"

#include "scan/logging.h"

#include <QDateTime>

#include <memory>
#include <new>
#include <utility>

namespace {

/// Reads that bypass the system's cache need a page-aligned buffer.
constexpr std::align_val_t kPageAlignment{4096};

struct PageAlignedDelete
{
    void operator()(char *bytes) const { ::operator delete(bytes, kPageAlignment); }
};

using PageAlignedBuffer = std::unique_ptr<char, PageAlignedDelete>;

/// Returns null if there is not enough memory.
PageAlignedBuffer pageAlignedBuffer(qint32 size)
{
    return PageAlignedBuffer(
        static_cast<char *>(::operator new(std::size_t(size), kPageAlignment, std::nothrow)));
}

constexpr unsigned long kAreaPause = 1; // milliseconds

QString openFailureText(quint32 error)
{
    if (error == system_error::kFileNotFound)
        return QStringLiteral("ERROR_FILE_NOT_FOUND");
    if (error == system_error::kAccessDenied)
        return QStringLiteral("ERROR_ACCESS_DENIED");
    return QStringLiteral("ERROR=%1").arg(error);
}

} // namespace

scan_tread::scan_tread(DriveSystem &drives, const DetectedDrive &device, const ScanRequest &request)
    : DriveWorker(drives, device.path)
    , m_request(request)
    , m_blocks{request.blockSize, driveSectorSize(device.bytesPerSector)}
{
    m_progress.first = quint64(request.firstSector);
    m_progress.current = m_progress.first;
}

void scan_tread::cancel()
{
    requestStop();
    DriveWorker::cancel();
}

bool scan_tread::hasAdvanced()
{
    return m_hasAdvanced.exchange(false) && !m_stopRequested;
}

ScanProgress scan_tread::progress() const
{
    const QMutexLocker lock(&m_mutex);
    ScanProgress progress = m_progress;
    // Must not share its data beyond the lock: once the reader releases the list, the worker writes without
    // synchronisation.
    if (isRunning())
        progress.badRanges.detach();
    return progress;
}

void scan_tread::work(Drive *drive, quint32 openError)
{
    qCDebug(lcScan).noquote() << QStringLiteral("Try to start Scan Disk %1.").arg(subject());
    if (drive)
        scan(*drive);
    else
        fail(openError);
}

void scan_tread::scan(Drive &drive)
{
    const PageAlignedBuffer buffer = pageAlignedBuffer(scanBufferSize(m_blocks));
    if (!buffer) {
        fail(system_error::kNotEnoughMemory);
        return;
    }
    publishTime();
    qCDebug(lcScan).noquote()
        << QStringLiteral("Start Scan Disk %1. First sector %2").arg(subject()).arg(m_request.firstSector);
    const ScanHooks hooks{[this](const ScanBlock &block) { publishBlock(block); },
                          [] { QThread::msleep(kAreaPause); }};
    scanSurface(drive, {quint64(m_request.firstSector), quint64(m_request.lastSector)}, m_blocks,
                MutableBytes(buffer.get(), scanBufferSize(m_blocks)), m_stopRequested, hooks);
    publishTime();
    const QMutexLocker lock(&m_mutex);
    qCDebug(lcScan).noquote()
        << QStringLiteral("Stop Scan Disk %1. Last sector %2").arg(subject()).arg(m_progress.current);
}

void scan_tread::fail(quint32 error)
{
    qCWarning(lcScan).noquote() << QStringLiteral("%1 Scan Disk %2.").arg(openFailureText(error), subject());
    publishTime();
    const QMutexLocker lock(&m_mutex);
    m_progress.hasOpenFailed = true;
}

void scan_tread::publishTime()
{
    const QMutexLocker lock(&m_mutex);
    m_progress.time = QDateTime::currentDateTime();
}

void scan_tread::publishBlock(const ScanBlock &block)
{
    const QMutexLocker lock(&m_mutex);
    m_hasAdvanced = true;
    m_progress.current = block.sectors.last;
    m_progress.percent = block.percent;
    if (!block.readable)
        addBadRange(m_progress.badRanges, block.sectors);
}
