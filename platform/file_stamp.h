// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// Properties of a file that show that it has changed, without reading it.
struct FileStamp
{
    bool exists = false;
    qint64 sizeBytes = 0;
    qint64 modifiedNs = 0; ///< since 1970-01-01 UTC, in the file system's resolution
    qint64 changedNs = 0;  ///< the same for the last change of content or attributes; 0 where not available
    quint64 inode = 0;     ///< 0 where not available

    friend bool operator==(const FileStamp &a, const FileStamp &b)
    {
        return a.exists == b.exists && a.sizeBytes == b.sizeBytes && a.modifiedNs == b.modifiedNs &&
               a.changedNs == b.changedNs && a.inode == b.inode;
    }
    friend bool operator!=(const FileStamp &a, const FileStamp &b) { return !(a == b); }
};

[[nodiscard]] FileStamp fileStamp(const QString &path);

/// Returns whether a write from `nowNs` on certainly changes the stamp. A file system's clock ticks every few
/// milliseconds: two writes within one tick leave the same time.
[[nodiscard]] bool isSettled(const FileStamp &stamp, qint64 nowNs);
