// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// Byte offsets in the S.M.A.R.T. data and threshold sectors (SFF-8035i). Both hold a table of slots after a
/// version word; slots at the same place belong together.
namespace smart_layout {

inline constexpr int kFirstSlot = 2;
inline constexpr int kSlotSize = 12;
inline constexpr int kSlotCount = 30;

// Within a slot of the data sector.
inline constexpr int kId = 0;
inline constexpr int kFlags = 1;
inline constexpr int kCurrent = 3;
inline constexpr int kWorst = 4;
inline constexpr int kRaw = 5; ///< 48 bits

/// Within a slot of the threshold sector, after the same ID.
inline constexpr int kThreshold = 1;

// In the data sector.
inline constexpr int kOfflineStatus = 362;
inline constexpr int kOfflineCapability = 367;
inline constexpr int kCapability = 368; ///< 16 bits

inline constexpr int slotOffset(int slot)
{
    return kFirstSlot + kSlotSize * slot;
}

} // namespace smart_layout
