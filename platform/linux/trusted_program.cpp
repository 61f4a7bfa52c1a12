// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/trusted_program.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <sys/stat.h>
#include <unistd.h>

namespace {

/// Returns whether root alone can replace the file or folder.
bool isRootsAlone(const QString &path)
{
    struct stat status = {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 && status.st_uid == 0 &&
           (status.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

} // namespace

Result<QString> trustedProgram(const QString &path)
{
    if (!QDir::isAbsolutePath(path))
        return Error{QStringLiteral("must be an absolute path")};
    const QString program = QFileInfo(path).canonicalFilePath();
    if (!QFileInfo(program).isFile() || ::access(QFile::encodeName(program).constData(), X_OK) != 0)
        return Error{QStringLiteral("does not name an executable file")};
    for (QString part = program;; part = QFileInfo(part).path()) {
        if (!isRootsAlone(part))
            return Error{
                QStringLiteral("names a program that others than root can replace: it and the folders above "
                               "it must belong to root and be writable for root alone")};
        if (part == QLatin1String("/"))
            return program;
    }
}
