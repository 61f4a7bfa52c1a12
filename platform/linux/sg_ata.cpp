// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/sg_ata.h"

#include "platform/drive_requests.h"

namespace sg_ata {

namespace {

namespace reg = drive_request::registers;

constexpr quint8 kAtaPassThrough16 = 0x85;
constexpr quint8 kAtaPassThrough12 = 0xA1;

// Protocol field, bits 4:1 of byte 1.
constexpr quint8 kNonData = 3 << 1;
constexpr quint8 kPioIn = 4 << 1;
constexpr quint8 kPioOut = 5 << 1;

// Byte 2: the field that holds the length, its unit, and the direction of the data.
constexpr quint8 kLengthInSectorCount = 0x02;
constexpr quint8 kLengthInBlocks = 0x04;
constexpr quint8 kFromDevice = 0x08;
constexpr quint8 kReturnRegisters = 0x20; // CK_COND

constexpr quint8 kDescriptorSense = 0x72;
constexpr quint8 kFixedSense = 0x70;
constexpr quint8 kAtaReturnDescriptor = 0x09;
constexpr quint8 kAtaReturnDescriptorLength = 12;

constexpr quint8 kSenseRecovered = 0x01;
constexpr quint8 kSenseNotReady = 0x02;
constexpr quint8 kSenseIllegalRequest = 0x05;
constexpr quint8 kDeviceFault = 0x20;                // DF of the status register
constexpr quint16 kAtaInformationAvailable = 0x001D; // additional sense code and qualifier

quint8 protocol(Transfer transfer)
{
    switch (transfer) {
    case Transfer::None:
        return kNonData;
    case Transfer::DataIn:
        return kPioIn;
    case Transfer::DataOut:
        return kPioOut;
    }
    return kNonData;
}

/// Requests the registers for commands without data only: with a PIO transfer some devices would then end the
/// command as aborted although the data were right.
quint8 flags(Transfer transfer)
{
    switch (transfer) {
    case Transfer::None:
        return kReturnRegisters;
    case Transfer::DataIn:
        return kFromDevice | kLengthInBlocks | kLengthInSectorCount;
    case Transfer::DataOut:
        return kLengthInBlocks | kLengthInSectorCount;
    }
    return 0;
}

/// The bytes of a command that hold the registers, from reg::kFeatures to reg::kCommand.
using RegisterPlaces = std::array<size_t, reg::kCommand + 1>;

template <size_t Size>
std::array<quint8, Size> passThrough(quint8 operationCode, const RegisterPlaces &places, ByteView registers,
                                     Transfer transfer)
{
    std::array<quint8, Size> command{operationCode, protocol(transfer), flags(transfer)};
    for (size_t i = 0; i < places.size(); ++i)
        command[places[i]] = registers.u8(int(i));
    return command;
}

/// Returns the ATA return descriptor among the sense descriptors; empty if there is none.
ByteView returnDescriptor(ByteView sense)
{
    const int end = std::min(sense.size(), 8 + int(sense.u8(7)));
    for (int at = 8; at + 2 <= end; at += 2 + sense.u8(at + 1)) {
        if (sense.u8(at) == kAtaReturnDescriptor && sense.u8(at + 1) == kAtaReturnDescriptorLength &&
            sense.covers(at, 2 + kAtaReturnDescriptorLength))
            return sense.mid(at, 2 + kAtaReturnDescriptorLength);
    }
    return {};
}

std::array<quint8, 8> registersOf(quint8 error, quint8 count, quint8 low, quint8 mid, quint8 high,
                                  quint8 device, quint8 status)
{
    return {error, count, low, mid, high, device, status, 0};
}

/// Returns the registers of an aborted command, for sense data that hold none.
std::array<quint8, 8> abortedRegisters()
{
    return registersOf(reg::kErrorAborted, 0, 0, 0, 0, 0, 0x50 | reg::kStatusError);
}

Verdict verdictFrom(quint8 key, const std::array<quint8, 8> &registers)
{
    const bool failed =
        (registers[reg::kCommand] & (reg::kStatusError | kDeviceFault)) != 0 || key > kSenseRecovered;
    return {failed ? Outcome::Failed : Outcome::Done, registers};
}

} // namespace

std::array<quint8, kLongCommandSize> longCommand(ByteView registers, Transfer transfer)
{
    return passThrough<kLongCommandSize>(kAtaPassThrough16, {4, 6, 8, 10, 12, 13, 14}, registers, transfer);
}

std::array<quint8, kShortCommandSize> shortCommand(ByteView registers, Transfer transfer)
{
    return passThrough<kShortCommandSize>(kAtaPassThrough12, {3, 4, 5, 6, 7, 8, 9}, registers, transfer);
}

Verdict readSense(ByteView sense)
{
    const quint8 format = sense.u8(0) & 0x7F;
    const bool inDescriptors = format == kDescriptorSense;
    const quint8 key = sense.u8(inDescriptors ? 1 : 2) & 0x0F;
    const int codeAt = inDescriptors ? 2 : 12;
    const quint16 code = quint16(sense.u8(codeAt) << 8 | sense.u8(codeAt + 1));

    // Returned registers prove that the drive answered, even with a key that a bridge uses for a refusal.
    if (inDescriptors) {
        const ByteView ata = returnDescriptor(sense);
        if (ata.size() > 0)
            return verdictFrom(key, registersOf(ata.u8(3), ata.u8(5), ata.u8(7), ata.u8(9), ata.u8(11),
                                                ata.u8(12), ata.u8(13)));
    } else if (format == kFixedSense && code == kAtaInformationAvailable) {
        return verdictFrom(key, registersOf(sense.u8(3), sense.u8(6), sense.u8(9), sense.u8(10), sense.u8(11),
                                            sense.u8(5), sense.u8(4)));
    }
    if (key == kSenseIllegalRequest)
        return {Outcome::NotKnown, {}};
    if (key == kSenseNotReady)
        return {Outcome::NotReady, {}};
    if (key <= kSenseRecovered && (inDescriptors || format == kFixedSense))
        return {Outcome::Done, {}};
    return {Outcome::Failed, abortedRegisters()};
}

} // namespace sg_ata
