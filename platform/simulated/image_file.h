// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"

#include <QFile>

#include <optional>

/// The file or block device that holds a simulated drive's sectors. The next read returns what was written
/// into it. Bypasses the system's cache where possible, so that a scan runs at the speed of the medium.
class ImageFile
{
public:
    /// Opens `path` for reading unless it is open already; returns false if it cannot be read.
    [[nodiscard]] bool open(const QString &path);

    /// Reads at byte `offset`; returns fewer bytes than requested at the end, nullopt if reading fails.
    [[nodiscard]] std::optional<int> readAt(quint64 offset, MutableBytes buffer);

private:
    QFile m_file;
};
