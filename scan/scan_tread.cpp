// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/scan_tread.h"

#include "scan/logging.h"

#include <QDateTime>

#include <memory>
#include <new>
#include <utility>

namespace {

/// Reads past the system's cache ask for a buffer at a page's start.
constexpr std::align_val_t kPageAlignment{4096};

struct PageAlignedDelete
{
    void operator()(char *bytes) const { ::operator delete(bytes, kPageAlignment); }
};

using PageAlignedBuffer = std::unique_ptr<char, PageAlignedDelete>;

/// Null when there is no memory for it.
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

scan_tread::scan_tread(DriveSystem &drives, qint32 deviceIndex, QString devicePath, QObject *parent)
    : QThread(parent)
    , m_drives(drives)
    , m_deviceIndex(deviceIndex)
    , m_devicePath(std::move(devicePath))
{}

void scan_tread::startScan(const SectorRange &range, qint32 blockSize)
{
    Q_ASSERT(!isRunning() && range.first <= range.last && blockSize >= kScanSectorSize);
    m_blockSize = blockSize;
    m_firstSector = range.first;
    m_lastSector = range.last;
    // Cleared before the thread runs, so that a stop which follows at once is not lost.
    m_stopRequested = false;
    m_cancelled = false;
    m_totals = {};
    m_progress = ScanProgress();
    m_progress->first = range.first;
    m_progress->current = range.first;
    start();
}

void scan_tread::requestStop()
{
    m_stopRequested = true;
}

void scan_tread::cancelRead()
{
    const QMutexLocker lock(&m_driveMutex);
    m_cancelled = true;
    if (m_driveInHand)
        m_driveInHand->cancel();
}

std::optional<ScanProgress> scan_tread::progress() const
{
    const QMutexLocker lock(&m_progressMutex);
    std::optional<ScanProgress> progress = m_progress;
    // Sharing ends before the lock does: Qt lets the worker write as soon as the reader has let go,
    // unordered.
    if (progress && isRunning())
        progress->badRanges.detach();
    return progress;
}

ScanTotals scan_tread::totals() const
{
    const QMutexLocker lock(&m_progressMutex);
    return m_totals;
}

void scan_tread::run()
{
    qCDebug(lcScan).noquote() << QStringLiteral("Try to start Scan Disk %1.").arg(m_devicePath);
    const OpenReply reply = m_drives.open(m_devicePath);
    if (!reply.drive) {
        fail(reply.error);
        return;
    }
    setDriveInHand(reply.drive.get());
    scan(*reply.drive);
    setDriveInHand(nullptr);
}

void scan_tread::scan(Drive &drive)
{
    const PageAlignedBuffer buffer = pageAlignedBuffer(m_blockSize);
    if (!buffer) {
        fail(system_error::kNotEnoughMemory);
        return;
    }
    publishTime();
    qCDebug(lcScan).noquote()
        << QStringLiteral("Start Scan Disk %1. First sector %2").arg(m_devicePath).arg(m_firstSector);
    const ScanHooks hooks{[this](const ScanBlock &block) { publishBlock(block); },
                          [] { QThread::msleep(kAreaPause); }};
    const ScanTotals totals = scanSurface(drive, {m_firstSector, m_lastSector},
                                          MutableBytes(buffer.get(), m_blockSize), m_stopRequested, hooks);
    publishTime();
    const QMutexLocker lock(&m_progressMutex);
    m_totals = totals;
    qCDebug(lcScan).noquote()
        << QStringLiteral("Stop Scan Disk %1. Last sector %2").arg(m_devicePath).arg(m_progress->current);
}

void scan_tread::fail(quint32 error)
{
    qCWarning(lcScan).noquote()
        << QStringLiteral("%1 Scan Disk %2.").arg(openFailureText(error), m_devicePath);
    publishTime();
    const QMutexLocker lock(&m_progressMutex);
    m_totals.openFailed = true;
    m_progress->error = 1;
}

void scan_tread::publishTime()
{
    const QMutexLocker lock(&m_progressMutex);
    m_progress->time = QDateTime::currentDateTime();
}

void scan_tread::publishBlock(const ScanBlock &block)
{
    const QMutexLocker lock(&m_progressMutex);
    m_progress->current = block.sectors.last;
    m_progress->percent = block.percent;
    if (!block.readable)
        addBadRange(m_progress->badRanges, block.sectors);
}

void scan_tread::setDriveInHand(Drive *drive)
{
    const QMutexLocker lock(&m_driveMutex);
    m_driveInHand = drive;
    if (drive && m_cancelled)
        drive->cancel();
}
