// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/drives.h"
#include "platform/simulated/machine_state.h"

#include <QtGlobal>

/// Answers one control request (platform/drive_requests.h) as a driver does. A request that is not made as
/// it must be leaves the output as it is.
[[nodiscard]] ControlReply answerRequest(const DriveState &drive, quint32 code, ByteView input,
                                         MutableBytes output);

/// How long the drive takes over a request, in milliseconds.
[[nodiscard]] int requestDelayMs(const DriveState &drive, quint32 code, ByteView input);
