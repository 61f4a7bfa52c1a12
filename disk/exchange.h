// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/drive_requests.h"
#include "platform/drives.h"
#include "wire/result.h"

#include <QtGlobal>

#include <array>

/// The four ways to send an ATA command to a drive. Each blocks until the drive answers. On failure the
/// content of `data` is undefined.
namespace exchange {

/// Success, or the system error; kIoDevice if the drive itself or its driver reports a failure.
using Outcome = Result<void, quint32>;

/// The ATA registers of a command, by the offsets of drive_request::registers.
using Registers = std::array<quint8, drive_request::registers::kSize>;

enum class Direction { DataIn, DataOut };

[[nodiscard]] Registers identifyDevice();
[[nodiscard]] Registers smartReadData();
[[nodiscard]] Registers smartReadThresholds();

/// Carries at most ata::kSectorSize bytes; more fails. On success `registers` are those the drive returned.
[[nodiscard]] Outcome ataPassThrough(Drive &drive, Registers &registers, MutableBytes data,
                                     Direction direction = Direction::DataIn);

/// Reads data if `data` is not empty, else sends a command without data; SMART RETURN STATUS then returns the
/// drive's registers in `registers`. Reads at most ata::kSectorSize bytes; more fails.
[[nodiscard]] Outcome smartDriveCommand(Drive &drive, int driveNumber, Registers &registers,
                                        MutableBytes data);

/// Reads data; on success `registers` are those the drive returned.
[[nodiscard]] Outcome idePassThrough(Drive &drive, Registers &registers, MutableBytes data);

/// Reads the vendor-specific bytes of a failure prediction, which are the S.M.A.R.T. data sector of an ATA
/// drive. Whether the drive predicts its failure does not matter.
[[nodiscard]] Outcome predictFailure(Drive &drive, MutableBytes data);

/// Returns whether the drive reports that it is in standby. CHECK POWER MODE does not wake it. A drive that
/// does not answer the command counts as awake.
[[nodiscard]] bool isInStandby(Drive &drive);

} // namespace exchange
