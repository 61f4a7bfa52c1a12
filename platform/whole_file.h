// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/regular_file.h"
#include "wire/result.h"

#include <QByteArray>
#include <QDateTime>
#include <QFileDevice>
#include <QString>

/// Reading and writing of files that fit into memory, such as the service's state. Any thread, but one writer
/// for one file at a time. Callers log failures.
namespace whole_file {

/// Reads all of the regular file at `path`. Fails with Kind::Missing if there is none, and with Kind::Failed
/// if something else has this name, if reading fails, or if the file is larger than `maxSize` bytes. Never
/// blocks on a pipe.
Result<QByteArray, AccessError> read(const QString &path, qint64 maxSize);

/// Replaces the file at `path` by `bytes` as a whole: after a crash or a power cut the old file or the new
/// one exists. On failure the old file stays, unless the error text reports that only the folder was not
/// synced. The default permissions are those of the old file, else 0644. Writes to "<path>.new" first.
/// Follows a symbolic link.
Result<void> replace(const QString &path, const QByteArray &bytes, QFileDevice::Permissions permissions = {});

/// Renames a file that cannot be used to "<path>.damaged-20261115-003607", so that a new one can be written
/// and an administrator can inspect the old one. Returns its new path.
Result<QString> setAside(const QString &path, const QDateTime &now);

} // namespace whole_file
