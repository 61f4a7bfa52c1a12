// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/drives.h"
#include "platform/simulated/ata_commands.h"
#include "platform/simulated/machine_state.h"

#include <QtGlobal>

/// Answers one control request (platform/drive_requests.h) as a driver does. A malformed request leaves the
/// output unchanged.
[[nodiscard]] ControlReply answerRequest(const DriveState &drive, quint32 code, ByteView input,
                                         MutableBytes output);

/// Returns the ATA command that a request carries; AtaCommand::Unknown also for a request without one.
[[nodiscard]] AtaCommand requestedCommand(quint32 code, ByteView input);

/// The time that a drive takes for a request.
struct RequestCost
{
    int delayMs = 0;
    bool hangs = false; ///< until the request is cancelled
};

[[nodiscard]] RequestCost requestCost(const DriveState &drive, quint32 code, ByteView input);
