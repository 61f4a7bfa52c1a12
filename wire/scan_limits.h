// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// Size of a sector in surface scans, in bytes. Independent of the drive's own sector size.
inline constexpr qint32 kScanSectorSize = 512;

/// Limits of a scan's block size, in bytes. The service starts no scan outside of them.
inline constexpr qint32 kMinScanBlockSize = 512;
inline constexpr qint32 kMaxScanBlockSize = 64 * 1024 * 1024;

/// The block size that consoles request unless an option names another one, in bytes.
inline constexpr qint32 kUsualScanBlockSize = 256 * 1024;
