// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/exchange.h"

#include <QByteArray>

#include <algorithm>

namespace {

using exchange::Registers;
namespace registers = drive_request::registers;

/// Written to the first data byte before a read. Some drivers report success and the full length without ever
/// sending the command to the drive: then the mark is still there, followed by zeros only.
constexpr quint8 kSentinel = 0xCF;

constexpr quint32 kTimeOutSeconds = 10;

bool isUntouched(ByteView data)
{
    const char *const end = data.data() + data.size();
    return data.u8(0) == kSentinel && std::all_of(data.data() + 1, end, [](char byte) { return byte == 0; });
}

void putRegisters(MutableBytes buffer, int offset, const Registers &block)
{
    for (int i = 0; i < registers::kSize; ++i)
        buffer.setU8(offset + i, block[std::size_t(i)]);
}

Registers registersAt(ByteView buffer, int offset)
{
    Registers block{};
    for (int i = 0; i < registers::kSize; ++i)
        block[std::size_t(i)] = buffer.u8(offset + i);
    return block;
}

Registers command(quint8 commandRegister, quint8 features)
{
    Registers block{};
    block[registers::kFeatures] = features;
    block[registers::kSectorCount] = 1;
    block[registers::kCommand] = commandRegister;
    return block;
}

Registers smartCommand(quint8 features)
{
    Registers block = command(ata::kSmart, features);
    block[registers::kLbaLow] = 1;
    block[registers::kLbaMid] = ata::kSmartLbaMid;
    block[registers::kLbaHigh] = ata::kSmartLbaHigh;
    return block;
}

/// Returns the system error of a pass-through whose registers are in `buffer`; none if it was carried out in
/// full and its `data` arrived.
exchange::Outcome outcomeOf(const ControlReply &reply, ByteView buffer, int registersOffset, ByteView data)
{
    if (!reply.ok())
        return reply.error;
    if (reply.bytesReturned != quint32(buffer.size()) || isUntouched(data) ||
        (buffer.u8(registersOffset + registers::kCommand) & registers::kStatusError) != 0)
        return system_error::kIoDevice;
    return {};
}

} // namespace

namespace exchange {

Registers identifyDevice()
{
    return command(ata::kIdentifyDevice, 0);
}

Registers smartReadData()
{
    return smartCommand(ata::kSmartReadData);
}

Registers smartReadThresholds()
{
    return smartCommand(ata::kSmartReadThresholds);
}

Outcome ataPassThrough(Drive &drive, Registers &registers, MutableBytes data, Direction direction)
{
    namespace layout = drive_request::ata_pass_through;
    if (data.size() > ata::kSectorSize)
        return system_error::kInvalidParameter;

    const bool hasData = data.size() > 0;
    const bool isRead = direction == Direction::DataIn;
    QByteArray bytes(hasData ? layout::kDataOffset + data.size() : layout::kHeaderSize, '\0');
    const MutableBytes buffer(bytes);
    buffer.setLe16(layout::kLength, layout::kHeaderSize);
    buffer.setLe32(layout::kDataTransferLength, quint32(data.size()));
    buffer.setLe32(layout::kTimeOut, kTimeOutSeconds);
    putRegisters(buffer, layout::kCurrentTaskFile, registers);
    if (hasData) {
        buffer.setLe16(layout::kFlags, isRead ? layout::kFlagDataIn : layout::kFlagDataOut);
        buffer.setLe32(layout::kDataBufferOffset, layout::kDataOffset);
        if (isRead)
            buffer.setU8(layout::kDataOffset, kSentinel);
        else
            buffer.copyIn(layout::kDataOffset, data.view());
    }

    const ControlReply reply = drive.control(drive_request::kAtaPassThrough, buffer.view(), buffer);
    const ByteView answer = isRead ? buffer.view().mid(layout::kDataOffset, data.size()) : ByteView();
    const Outcome outcome = outcomeOf(reply, buffer.view(), layout::kCurrentTaskFile, answer);
    if (outcome) {
        registers = registersAt(buffer.view(), layout::kCurrentTaskFile);
        data.copyIn(0, answer);
    }
    return outcome;
}

Outcome smartDriveCommand(Drive &drive, int driveNumber, Registers &registers, MutableBytes data)
{
    namespace layout = drive_request::send_command;
    if (data.size() > ata::kSectorSize)
        return system_error::kInvalidParameter;

    const bool isRead = data.size() > 0;
    const bool returnsRegisters = !isRead && registers[registers::kFeatures] == ata::kSmartReturnStatus;
    Registers sent = registers;
    sent[registers::kDevice] = driveNumber % 2 == 0 ? 0xA0 : 0xB0; // bit 4 chose the second drive on a cable

    QByteArray inputBytes(layout::kInputSize, '\0');
    const MutableBytes input(inputBytes);
    input.setLe32(layout::kBufferSize, isRead ? ata::kSectorSize : 0);
    putRegisters(input, layout::kRegisters, sent);
    input.setU8(layout::kDriveNumber, quint8(driveNumber));

    int outputSize = layout::kOutputHeaderSize;
    if (isRead)
        outputSize += ata::kSectorSize;
    else if (returnsRegisters)
        outputSize = layout::kOutputRegistersSize;
    QByteArray output(outputSize, '\0');
    const quint32 code = isRead ? drive_request::kSmartReceiveData : drive_request::kSmartSendCommand;
    const ControlReply reply = drive.control(code, input.view(), MutableBytes(output));
    const ByteView answer(output);
    if (!reply.ok())
        return reply.error;
    if (answer.u8(layout::kOutputDriverError) != 0)
        return system_error::kIoDevice;
    if (returnsRegisters)
        registers = registersAt(answer, layout::kOutputHeaderSize);
    data.copyIn(0, answer.mid(layout::kOutputHeaderSize, data.size()));
    return {};
}

Outcome idePassThrough(Drive &drive, Registers &registers, MutableBytes data)
{
    namespace layout = drive_request::ide_pass_through;
    QByteArray bytes(layout::kDataOffset + data.size(), '\0');
    const MutableBytes buffer(bytes);
    putRegisters(buffer, layout::kRegisters, registers);
    buffer.setLe32(layout::kDataLength, quint32(data.size()));
    if (data.size() > 0)
        buffer.setU8(layout::kDataOffset, kSentinel);

    const ControlReply reply = drive.control(drive_request::kIdePassThrough, buffer.view(), buffer);
    const ByteView answer = buffer.view().mid(layout::kDataOffset, data.size());
    const Outcome outcome = outcomeOf(reply, buffer.view(), layout::kRegisters, answer);
    if (outcome) {
        registers = registersAt(buffer.view(), layout::kRegisters);
        data.copyIn(0, answer);
    }
    return outcome;
}

Outcome predictFailure(Drive &drive, MutableBytes data)
{
    namespace layout = drive_request::predict_failure;
    QByteArray output(layout::kSize, '\0');
    const ControlReply reply =
        drive.control(drive_request::kPredictFailure, ByteView(), MutableBytes(output));
    if (!reply.ok())
        return reply.error;
    data.copyIn(0, ByteView(output).mid(layout::kVendorSpecific, data.size()));
    return {};
}

bool isInStandby(Drive &drive)
{
    Registers registers = command(ata::kCheckPowerMode, 0);
    if (!ataPassThrough(drive, registers, MutableBytes()))
        return false;
    const quint8 mode = registers[drive_request::registers::kSectorCount];
    return mode == ata::kPowerStandby || mode == ata::kPowerStandbyY;
}

} // namespace exchange
