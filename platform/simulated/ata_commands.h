// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/simulated/machine_state.h"

#include <QByteArray>

/// The ATA commands that a simulated drive knows; it aborts every other one.
enum class AtaCommand { Identify, SmartData, SmartThresholds, SmartStatus, CheckPower, Unknown };

/// What a drive hands back for one command.
struct AtaAnswer
{
    QByteArray registerBlock; ///< drive_request::registers::kSize bytes
    QByteArray data;          ///< a sector, or nothing
    bool aborted = false;
};

[[nodiscard]] AtaCommand ataCommand(ByteView registerBlock);

/// Whether the drive answers the command with a sector.
[[nodiscard]] bool readsSector(AtaCommand command);

/// Whether the registers hold what the command asks for, the device register aside: drivers fill that in.
[[nodiscard]] bool registersSuit(ByteView registerBlock);

[[nodiscard]] AtaAnswer executeAta(const DriveState &drive, ByteView registerBlock);
