// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/worker.h"

void DriveWorker::cancel()
{
    const QMutexLocker lock(&m_mutex);
    m_isCancelled = true;
    if (m_drive)
        m_drive->cancel();
}

void DriveWorker::closeHeader()
{
    std::unique_ptr<Drive> closing; // outside the lock: closing a drive may take long
    const QMutexLocker lock(&m_mutex);
    closing.swap(m_drive);
}

void DriveWorker::run()
{
    OpenReply opened = m_drives.open(subject());
    Drive *const drive = opened.drive.get();
    {
        const QMutexLocker lock(&m_mutex);
        m_drive = std::move(opened.drive);
        if (m_drive && m_isCancelled)
            m_drive->cancel();
    }
    work(drive, opened.error);
    Q_EMIT workDone();
    closeHeader();
}
