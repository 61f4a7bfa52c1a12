// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <cstdint>

/// Shared by the stand-in driver and the tests: the file with the answers of drive N. The driver reads it for
/// each request; without the file the drive does not exist.
namespace stand_in {

inline constexpr wchar_t kFilePattern[] = L"\\??\\C:\\halvex-drives\\%u.bin"; // N; the kernel's own name
inline constexpr unsigned kDriveNumbers = 8;                                  // 0 to 7
inline constexpr std::uint32_t kRead = 1;                                     // used beside the control codes

struct DriveFile
{
    std::uint64_t capacity; ///< bytes
    std::uint64_t badBegin; ///< bytes; a read that touches one from here on ...
    std::uint64_t badEnd;   ///< ... and before this fails
    std::uint32_t refused;  ///< a control code that the driver refuses
    std::uint32_t hanging;  ///< the control code, or kRead, that ends only when it is cancelled
    std::uint32_t isGpt;    ///< 1: a GUID partition table, which the older partition request refuses
    std::uint32_t isAsleep; ///< 1: CHECK POWER MODE answers standby
    std::uint8_t identify[512];
    std::uint8_t smartData[512];
    std::uint8_t smartThresholds[512];
};

} // namespace stand_in
