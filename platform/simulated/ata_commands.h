// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/simulated/machine_state.h"

#include <QByteArray>

/// The ATA commands that a simulated drive supports; it aborts every other one.
enum class AtaCommand { Identify, SmartData, SmartThresholds, SmartStatus, CheckPower, Unknown };

/// A drive's answer to one command.
struct AtaAnswer
{
    QByteArray registerBlock; ///< drive_request::registers::kSize bytes
    QByteArray data;          ///< a sector, or nothing
    bool aborted = false;
};

[[nodiscard]] AtaCommand ataCommand(ByteView registerBlock);

/// Returns whether the drive answers the command with a sector.
[[nodiscard]] bool readsSector(AtaCommand command);

/// Returns whether the registers are right for the command. The device register is not checked: drivers fill
/// it in.
[[nodiscard]] bool registersSuit(ByteView registerBlock);

[[nodiscard]] AtaAnswer executeAta(const DriveState &drive, ByteView registerBlock);
