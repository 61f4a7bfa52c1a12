// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/drive_requests.h"
#include "platform/drives.h"

#include <QtGlobal>

#include <array>

/// The four ways to put an ATA command to a drive. Each blocks until the drive answers, and returns false
/// when the system, the driver or the drive refuses; `data` then holds nothing of use.
namespace exchange {

/// The ATA registers of a command, by the offsets of drive_request::registers.
using Registers = std::array<quint8, drive_request::registers::kSize>;

enum class Direction { DataIn, DataOut };

[[nodiscard]] Registers identifyDevice();
[[nodiscard]] Registers smartReadData();
[[nodiscard]] Registers smartReadThresholds();

/// Carries at most ata::kSectorSize bytes; more fails. On success `registers` are those the drive returned.
[[nodiscard]] bool ataPassThrough(Drive &drive, Registers &registers, MutableBytes data,
                                  Direction direction = Direction::DataIn);

/// A data read when `data` is not empty, else a command without data; SMART RETURN STATUS then hands the
/// drive's registers back in `registers`. Reads at most ata::kSectorSize bytes; more fails.
[[nodiscard]] bool smartDriveCommand(Drive &drive, int driveNumber, Registers &registers, MutableBytes data);

/// Reads data; on success `registers` are those the drive returned.
[[nodiscard]] bool idePassThrough(Drive &drive, Registers &registers, MutableBytes data);

/// The vendor-specific bytes of a failure prediction, which are the S.M.A.R.T. data sector of an ATA drive.
/// Whether the drive predicts its failure plays no part.
[[nodiscard]] bool predictFailure(Drive &drive, MutableBytes data);

} // namespace exchange
