// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/drives.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// What the system itself knows of a drive's identity, as the bytes it gave; empty where it told nothing.
struct StorageDescriptor
{
    QByteArray vendor;
    QByteArray product;
    QByteArray revision;
    QByteArray serial;

    [[nodiscard]] QString model() const; ///< vendor and product
};

namespace storage_descriptor {

/// Reads the strings out of `answer`, the bytes that the system returned. Offsets that point elsewhere than
/// behind the fixed part and into `answer` are ignored.
[[nodiscard]] StorageDescriptor parse(ByteView answer);

/// Asks the drive's driver; nullopt when it refuses.
[[nodiscard]] std::optional<StorageDescriptor> query(Drive &drive);

} // namespace storage_descriptor
