// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/regular_file.h"

#include "platform/windows/wide_text.h"

#include <QThread>

#include <fcntl.h>
#include <io.h>
#include <windows.h>

namespace {

/// Replacing a file fails while another program reads it, as virus scanners and backups do for a moment.
constexpr int kRenameAttempts = 10;
constexpr unsigned long kRenamePause = 50; // milliseconds

AccessError lastError()
{
    const DWORD error = GetLastError();
    const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
    return {missing ? AccessError::Kind::Missing : AccessError::Kind::Failed, qt_error_string(int(error))};
}

HANDLE openHandle(const QString &path, QIODevice::OpenMode mode)
{
    const bool isWriting = mode & QIODevice::WriteOnly;
    const DWORD access = (mode & QIODevice::Append) ? GENERIC_READ | GENERIC_WRITE
                         : isWriting                ? GENERIC_WRITE
                                                    : GENERIC_READ;
    const DWORD creation = (mode & QIODevice::NewOnly)  ? CREATE_NEW
                           : (mode & QIODevice::Append) ? OPEN_ALWAYS
                                                        : OPEN_EXISTING;
    return CreateFileW(wide(path), access, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                       creation, FILE_ATTRIBUTE_NORMAL, nullptr);
}

} // namespace

namespace regular_file {

Result<void, AccessError> open(QFile &file, QIODevice::OpenMode mode)
{
    const HANDLE handle = openHandle(file.fileName(), mode);
    if (handle == INVALID_HANDLE_VALUE)
        return lastError();
    const int descriptor = GetFileType(handle) == FILE_TYPE_DISK
                               ? _open_osfhandle(reinterpret_cast<intptr_t>(handle), _O_BINARY)
                               : -1;
    if (descriptor < 0) {
        CloseHandle(handle);
        return AccessError{AccessError::Kind::Failed, QStringLiteral("not a regular file")};
    }
    // NewOnly would be refused for a descriptor: the file exists by now.
    const QIODevice::OpenMode access = mode & (QIODevice::ReadWrite | QIODevice::Append);
    if (!file.open(descriptor, access | QIODevice::Unbuffered, QFileDevice::AutoCloseHandle))
        return AccessError{AccessError::Kind::Failed, file.errorString()};
    return {};
}

Result<void> sync(QFile &file)
{
    if (!FlushFileBuffers(reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()))))
        return Error{lastError().text};
    return {};
}

Result<void> rename(const QString &from, const QString &to)
{
    for (int attempt = 1;; ++attempt) {
        if (MoveFileExW(wide(from), wide(to), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
            return {};
        if (attempt == kRenameAttempts)
            return Error{lastError().text};
        QThread::msleep(kRenamePause);
    }
}

} // namespace regular_file
