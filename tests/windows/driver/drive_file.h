// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <cstdint>

/// What the stand-in driver and the tests share: the file that says what drive N answers. The driver reads it
/// anew at each request; without the file there is no such drive.
namespace stand_in {

inline constexpr wchar_t kFilePattern[] = L"C:\\halvex-drives\\%u.bin"; // N
inline constexpr unsigned kDriveNumbers = 8;                            // 0 to 7

/// The kinds of requests: bits of the sets below.
enum Kind : std::uint32_t {
    kGeometry = 1 << 0,
    kPartition = 1 << 1,
    kDeviceNumber = 1 << 2,
    kDescriptor = 1 << 3,
    kSmartVersion = 1 << 4,
    kAta = 1 << 5,
    kSmart = 1 << 6,
    kIde = 1 << 7,
    kPredict = 1 << 8,
    kRead = 1 << 9,
    kAllKinds = (1 << 10) - 1,
};

struct DriveFile
{
    std::uint64_t capacity; ///< bytes
    std::uint64_t badBegin; ///< bytes; a read that touches one from here on ...
    std::uint64_t badEnd;   ///< ... and before this fails
    std::uint32_t answered; ///< kinds that the driver knows; it refuses the others
    std::uint32_t failing;  ///< kinds that the drive answers with an error of its own
    std::uint32_t hanging;  ///< kinds that end only when they are cancelled
    std::uint32_t mediaType;
    std::uint8_t identify[512];
    std::uint8_t smartData[512];
    std::uint8_t smartThresholds[512];
};

} // namespace stand_in
