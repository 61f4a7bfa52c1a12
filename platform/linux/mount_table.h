// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>
#include <QVector>

/// A mounted file system that lies on a block device of this machine.
struct Mount
{
    QString mountPoint; ///< without a trailing slash, except for "/"
    QString source;     ///< the device's node: "/dev/sda1"
    QString fileSystem; ///< "ext4"
};

/// Returns the mounts of a mountinfo file (proc(5)) whose source is a device node, each device once, by its
/// first mount. Skips malformed lines.
[[nodiscard]] QVector<Mount> parseMountTable(const QByteArray &mountInfo);
