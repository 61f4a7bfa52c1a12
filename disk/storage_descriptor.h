// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/drives.h"

#include <QByteArray>
#include <QString>

#include <optional>

/// A drive's identity as the system keeps it, in the system's own bytes; empty fields are not known.
struct StorageDescriptor
{
    QByteArray vendor;
    QByteArray product;
    QByteArray revision;
    QByteArray serial;

    [[nodiscard]] QString model() const; ///< vendor and product
};

namespace storage_descriptor {

/// Reads the strings from `answer`, the bytes that the system returned. Ignores offsets into the fixed part
/// or beyond `answer`.
[[nodiscard]] StorageDescriptor parse(ByteView answer);

/// Sends the request to the drive's driver; returns nullopt if it refuses.
[[nodiscard]] std::optional<StorageDescriptor> query(Drive &drive);

} // namespace storage_descriptor
