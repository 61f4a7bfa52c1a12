// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_thread.h"

#include "disk/exchange.h"

#include <QMutexLocker>

#include <utility>

namespace {

bool readSector(Drive &drive, const SmartRead &read, exchange::Registers registers, MutableBytes sector)
{
    switch (read.method) {
    case AccessMethod::AtaPassThrough:
        return exchange::ataPassThrough(drive, registers, sector);
    case AccessMethod::SmartDriveData:
        return exchange::smartDriveCommand(drive, read.index, registers, sector);
    case AccessMethod::IdePassThrough:
        return exchange::idePassThrough(drive, registers, sector);
    case AccessMethod::StorageDescriptor:
        return exchange::predictFailure(drive, sector);
    case AccessMethod::None:
        break;
    }
    return true; // nothing to ask: an empty attribute table
}

/// A failure prediction comes without thresholds, and who answers nothing has none either.
bool hasThresholds(AccessMethod method)
{
    return method != AccessMethod::StorageDescriptor && method != AccessMethod::None;
}

std::optional<SmartSectors> readSectors(Drive &drive, const SmartRead &read)
{
    SmartSectors sectors{QByteArray(ata::kSectorSize, '\0'), QByteArray(ata::kSectorSize, '\0')};
    if (!readSector(drive, read, exchange::smartReadData(), MutableBytes(sectors.data)))
        return std::nullopt;
    if (read.withThresholds && hasThresholds(read.method) &&
        !readSector(drive, read, exchange::smartReadThresholds(), MutableBytes(sectors.thresholds)))
        return std::nullopt;
    return sectors;
}

} // namespace

SMART_thread::SMART_thread(DriveSystem &drives, const SmartRead &read, QObject *parent)
    : QThread(parent)
    , m_drives(drives)
    , m_read(read)
{}

void SMART_thread::cancel()
{
    const QMutexLocker lock(&m_mutex);
    m_isCancelled = true;
    m_sectors.reset();
    if (m_drive)
        m_drive->cancel();
}

std::optional<SmartSectors> SMART_thread::takeSectors()
{
    const QMutexLocker lock(&m_mutex);
    return std::exchange(m_sectors, std::nullopt);
}

void SMART_thread::closeHeader()
{
    std::unique_ptr<Drive> closing; // outside the lock: closing a drive may take long
    const QMutexLocker lock(&m_mutex);
    closing.swap(m_drive);
}

void SMART_thread::run()
{
    if (Drive *const drive = openDrive()) {
        std::optional<SmartSectors> sectors = readSectors(*drive, m_read);
        const QMutexLocker lock(&m_mutex);
        if (!m_isCancelled)
            m_sectors = std::move(sectors);
    }
    Q_EMIT needStopTimer(m_read.index);
    closeHeader();
    Q_EMIT finishReadSMART(m_read.index);
}

/// Null when the drive does not open or the read was cancelled meanwhile.
Drive *SMART_thread::openDrive()
{
    OpenReply opened = m_drives.open(m_read.path);
    const QMutexLocker lock(&m_mutex);
    if (m_isCancelled)
        return nullptr;
    m_drive = std::move(opened.drive);
    return m_drive.get();
}
