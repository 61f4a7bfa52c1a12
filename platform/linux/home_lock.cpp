// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/home_lock.h"

#include "platform/linux/logging.h"

#include <QFile>

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <utility>

HomeLock::HomeLock(QString path)
    : m_path(std::move(path))
{}

Result<void> HomeLock::acquire()
{
    if (m_path.isEmpty())
        return {};
    // flock(2) and not fcntl(2): the latter's locks end with the first close of the file anywhere in the
    // process.
    FileDescriptor file(::open(QFile::encodeName(m_path).constData(),
                               O_RDWR | O_CREAT | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW, 0600));
    if (file.isOpen() && ::flock(file.get(), LOCK_EX | LOCK_NB) == 0) {
        m_file = std::move(file);
        return {};
    }
    if (errno == EWOULDBLOCK)
        return Error{QStringLiteral("another service is running in this home: %1 is locked").arg(m_path)};
    qCWarning(lcPlatform, "%s cannot be locked, and a second service would not be noticed: %s",
              qUtf8Printable(m_path), qUtf8Printable(qt_error_string(errno)));
    return {};
}
