// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// What tells that a file has changed without reading it.
struct FileStamp
{
    bool exists = false;
    qint64 sizeBytes = 0;
    qint64 modifiedNs = 0; ///< since 1970-01-01 UTC, as fine as the file system keeps it
    quint64 inode = 0;     ///< 0 where the system has none to show

    friend bool operator==(const FileStamp &a, const FileStamp &b)
    {
        return a.exists == b.exists && a.sizeBytes == b.sizeBytes && a.modifiedNs == b.modifiedNs &&
               a.inode == b.inode;
    }
    friend bool operator!=(const FileStamp &a, const FileStamp &b) { return !(a == b); }
};

[[nodiscard]] FileStamp fileStamp(const QString &path);

/// Whether a file that is written from `nowNs` on is sure to get another stamp. A file system's clock ticks
/// every few milliseconds: two writes within one tick leave the same time.
[[nodiscard]] bool isSettled(const FileStamp &stamp, qint64 nowNs);
