// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/regular_file.h"

#include "platform/linux/file_descriptor.h"

#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>

namespace {

AccessError failure(int error)
{
    const bool missing = error == ENOENT || error == ENOTDIR;
    return {missing ? AccessError::Kind::Missing : AccessError::Kind::Failed, qt_error_string(error)};
}

int flags(QIODevice::OpenMode mode)
{
    // Without O_NONBLOCK a pipe's open waits for the other end.
    int flags = O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
    if (mode & QIODevice::NewOnly)
        return flags | O_WRONLY | O_CREAT | O_EXCL;
    if (mode & QIODevice::Append)
        return flags | O_WRONLY | O_CREAT | O_APPEND;
    return flags | O_RDONLY;
}

} // namespace

namespace regular_file {

Result<void, AccessError> open(QFile &file, QIODevice::OpenMode mode)
{
    const QByteArray path = QFile::encodeName(file.fileName());
    FileDescriptor descriptor(::open(path.constData(), flags(mode), S_IRUSR | S_IWUSR));
    if (!descriptor.isOpen())
        return failure(errno);
    struct stat status = {};
    if (::fstat(descriptor.get(), &status) != 0)
        return failure(errno);
    if (!S_ISREG(status.st_mode))
        return AccessError{AccessError::Kind::Failed, QStringLiteral("not a regular file")};
    // NewOnly would be refused for a descriptor: the file exists by now.
    const QIODevice::OpenMode access = mode & (QIODevice::ReadWrite | QIODevice::Append);
    if (!file.open(descriptor.release(), access | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle))
        return AccessError{AccessError::Kind::Failed, file.errorString()};
    return {};
}

Result<void> sync(QFile &file)
{
    if (::fsync(file.handle()) != 0)
        return Error{qt_error_string(errno)};
    return {};
}

Result<void> rename(const QString &from, const QString &to)
{
    if (::rename(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) != 0)
        return Error{qt_error_string(errno)};
    const QByteArray folder = QFile::encodeName(QFileInfo(to).path());
    const FileDescriptor directory(::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory.isOpen() || ::fsync(directory.get()) != 0)
        return Error{QStringLiteral("the folder cannot be synced: ") + qt_error_string(errno)};
    return {};
}

} // namespace regular_file
