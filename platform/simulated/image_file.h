// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"

#include <QFile>

#include <optional>

/// The file or block device that holds a simulated drive's sectors. What is written into it shows in the next
/// read. Where the system allows, reads go past its cache, so that a scan takes what the medium takes.
class ImageFile
{
public:
    /// Opens `path` for reading unless it is open already; false when it cannot be read.
    [[nodiscard]] bool open(const QString &path);

    /// Reads at byte `offset`; fewer bytes than asked for at the end; nullopt when reading fails.
    [[nodiscard]] std::optional<int> readAt(quint64 offset, MutableBytes buffer);

private:
    QFile m_file;
};
