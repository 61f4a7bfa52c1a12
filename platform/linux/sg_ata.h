// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"

#include <QtGlobal>

#include <array>

/// ATA commands carried by SCSI: the ATA PASS-THROUGH commands of SAT (T10/BSR INCITS 557) and their results
/// in the sense data. Values only; sg_io.h sends them.
namespace sg_ata {

inline constexpr int kLongCommandSize = 16;
inline constexpr int kShortCommandSize = 12;

enum class Transfer {
    None,
    DataIn,
    DataOut,
};

/// Returns the ATA PASS-THROUGH (16) command for a register block of drive_request::registers.
[[nodiscard]] std::array<quint8, kLongCommandSize> longCommand(ByteView registers, Transfer transfer);
/// Returns the same as ATA PASS-THROUGH (12), the only one that some bridges support.
[[nodiscard]] std::array<quint8, kShortCommandSize> shortCommand(ByteView registers, Transfer transfer);

/// The meaning of a command's sense data.
enum class Outcome {
    Done,     ///< the drive carried it out
    Failed,   ///< the drive ended it with an error; `registers` holds its error and status
    NotKnown, ///< the bridge or adapter does not know the command
    NotReady, ///< no drive answered the adapter
};

struct Verdict
{
    Outcome outcome = Outcome::Done;
    std::array<quint8, 8> registers{}; ///< as drive_request::registers orders them
};

/// Reads the sense data of a command that ended with CHECK CONDITION, in descriptor or fixed format (SPC-4).
[[nodiscard]] Verdict readSense(ByteView sense);

} // namespace sg_ata
