// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"

#include <QByteArray>

/// The header of an ATA pass-through holds a pointer-sized offset, so that it is 8 bytes longer for a 64-bit
/// program. Everything after that offset, data included, moves by as much.
namespace ata_header {

inline constexpr int kWideGrowth = 8;

/// A request in its 32-bit form as a 64-bit program has to send it. Shorter bytes than a header stay as they
/// are, for the system to refuse.
[[nodiscard]] QByteArray widened(ByteView request);

/// A 64-bit answer in the 32-bit form.
[[nodiscard]] QByteArray narrowed(ByteView answer);

} // namespace ata_header
