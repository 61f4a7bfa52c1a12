// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/file_stamp.h"

#include <QtGlobal>

#ifdef Q_OS_UNIX
#include <QFile>

#include <sys/stat.h>
#else
#include <QDateTime>
#include <QFileInfo>
#endif

namespace {

constexpr qint64 kNsPerSecond = 1000000000;
constexpr qint64 kSettledAfterNs = kNsPerSecond / 10; // several ticks of the coarsest clock of a file system

} // namespace

#ifdef Q_OS_UNIX

FileStamp fileStamp(const QString &path)
{
    struct stat status = {};
    if (stat(QFile::encodeName(path).constData(), &status) != 0)
        return {};
    const auto nanoseconds = [](const timespec &time) {
        return qint64(time.tv_sec) * kNsPerSecond + time.tv_nsec;
    };
    return {true, status.st_size, nanoseconds(status.st_mtim), nanoseconds(status.st_ctim), status.st_ino};
}

#else

FileStamp fileStamp(const QString &path)
{
    const QFileInfo info(path);
    if (!info.exists())
        return {};
    return {true, info.size(), info.lastModified().toMSecsSinceEpoch() * (kNsPerSecond / 1000), 0, 0};
}

#endif

bool isSettled(const FileStamp &stamp, qint64 nowNs)
{
    return !stamp.exists || stamp.modifiedNs < nowNs - kSettledAfterNs;
}
