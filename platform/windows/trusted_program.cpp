// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/trusted_program.h"

#include <QDir>
#include <QFileInfo>

Result<QString> trustedProgram(const QString &path)
{
    if (!QDir::isAbsolutePath(path))
        return Error{QStringLiteral("must be an absolute path")};
    const QFileInfo program(path);
    if (!program.isFile() || !program.isExecutable())
        return Error{QStringLiteral("does not name an executable file")};
    return program.canonicalFilePath();
}
