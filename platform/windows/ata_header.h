// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"

#include <QByteArray>

/// The header of an ATA pass-through holds a pointer-sized offset, so that it is 8 bytes longer in a 64-bit
/// program. Everything after that offset, including the data, moves by 8 bytes.
namespace ata_header {

inline constexpr int kWideGrowth = 8;

/// Converts a request in its 32-bit form to that of a 64-bit program. Returns input shorter than a header
/// unchanged; the system refuses it.
[[nodiscard]] QByteArray widened(ByteView request);

/// Converts a 64-bit answer to the 32-bit form.
[[nodiscard]] QByteArray narrowed(ByteView answer);

} // namespace ata_header
