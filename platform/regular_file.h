// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/access_error.h"
#include "wire/result.h"

#include <QFile>

/// The file operations whose guarantees differ between systems. Use platform/whole_file.h for files that fit
/// into memory.

namespace regular_file {

/// Opens `file` without ever blocking. Fails with Failed if the name belongs to something else than a
/// regular file (a pipe, a device, a folder). With QIODevice::Append or NewOnly a missing file is created,
/// readable for its owner alone. The device is unbuffered.
Result<void, AccessError> open(QFile &file, QIODevice::OpenMode mode);

/// Waits until the content of `file`, opened by open(), is on the disk.
Result<void> sync(QFile &file);

/// Renames the file `from` to `to` in one step that survives a power cut, and replaces a file of that name.
/// Both are in the same folder. If it fails after `to` was replaced, only its durability is in doubt. May
/// wait for half a second on Windows if a reader has the old file open.
Result<void> rename(const QString &from, const QString &to);

} // namespace regular_file
