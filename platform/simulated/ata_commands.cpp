// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/ata_commands.h"

#include "platform/drive_requests.h"
#include "platform/simulated/sectors.h"

namespace registers = drive_request::registers;

namespace {

constexpr quint8 kStatusReady = 0x50; // DRDY, and the bit that was once "seek complete"

// The address registers after SMART RETURN STATUS from a drive that predicts its failure.
constexpr quint8 kFailingLbaMid = 0xF4;
constexpr quint8 kFailingLbaHigh = 0x2C;

bool aborts(const DriveState &drive, AtaCommand command)
{
    const bool needsSmart = command != AtaCommand::Identify && command != AtaCommand::CheckPower;
    return command == AtaCommand::Unknown || (needsSmart && !drive.smart.enabled);
}

QByteArray sectorOf(const DriveState &drive, AtaCommand command)
{
    switch (command) {
    case AtaCommand::Identify:
        return drive.identify;
    case AtaCommand::SmartData:
        return drive.smartData;
    case AtaCommand::SmartThresholds:
        return drive.smartThresholds;
    case AtaCommand::SmartStatus:
    case AtaCommand::CheckPower:
    case AtaCommand::Unknown:
        break;
    }
    return {};
}

} // namespace

AtaCommand ataCommand(ByteView registerBlock)
{
    const quint8 command = registerBlock.u8(registers::kCommand);
    if (command == ata::kIdentifyDevice)
        return AtaCommand::Identify;
    if (command == ata::kCheckPowerMode)
        return AtaCommand::CheckPower;
    if (command != ata::kSmart)
        return AtaCommand::Unknown;
    switch (registerBlock.u8(registers::kFeatures)) {
    case ata::kSmartReadData:
        return AtaCommand::SmartData;
    case ata::kSmartReadThresholds:
        return AtaCommand::SmartThresholds;
    case ata::kSmartReturnStatus:
        return AtaCommand::SmartStatus;
    default:
        return AtaCommand::Unknown;
    }
}

bool readsSector(AtaCommand command)
{
    return command == AtaCommand::Identify || command == AtaCommand::SmartData ||
           command == AtaCommand::SmartThresholds;
}

bool registersSuit(ByteView registerBlock)
{
    const AtaCommand command = ataCommand(registerBlock);
    if (registerBlock.u8(registers::kReserved) != 0)
        return false;
    if (readsSector(command) && registerBlock.u8(registers::kSectorCount) != 1)
        return false;
    if (command == AtaCommand::Identify || command == AtaCommand::CheckPower ||
        command == AtaCommand::Unknown)
        return true;
    return registerBlock.u8(registers::kLbaMid) == ata::kSmartLbaMid &&
           registerBlock.u8(registers::kLbaHigh) == ata::kSmartLbaHigh;
}

AtaAnswer executeAta(const DriveState &drive, ByteView registerBlock)
{
    const AtaCommand command = ataCommand(registerBlock);
    AtaAnswer answer;
    answer.aborted = aborts(drive, command);
    answer.registerBlock = registerBlock.toByteArray();
    const MutableBytes block(answer.registerBlock);
    block.setU8(registers::kFeatures, answer.aborted ? registers::kErrorAborted : 0);
    block.setU8(registers::kCommand, kStatusReady | (answer.aborted ? registers::kStatusError : 0));
    if (answer.aborted)
        return answer;
    answer.data = sectorOf(drive, command);
    if (command == AtaCommand::CheckPower)
        block.setU8(registers::kSectorCount, drive.sleeping ? ata::kPowerStandby : ata::kPowerActive);
    if (command == AtaCommand::SmartStatus &&
        predictsFailure(ByteView(drive.smartData), ByteView(drive.smartThresholds))) {
        block.setU8(registers::kLbaMid, kFailingLbaMid);
        block.setU8(registers::kLbaHigh, kFailingLbaHigh);
    }
    return answer;
}
