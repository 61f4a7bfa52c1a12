// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/sg_io.h"

#include "platform/drive_requests.h"
#include "platform/linux/linux_error.h"
#include "platform/linux/logging.h"
#include "platform/linux/sg_ata.h"

#include <scsi/sg.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

namespace sg_io {

namespace {

namespace ata_request = drive_request::ata_pass_through;
namespace reg = drive_request::registers;

// Host status codes of the kernel's SCSI layer (scsi/scsi_status.h), which no user header names.
constexpr unsigned kDidNoConnect = 0x01;
constexpr unsigned kDidTimeOut = 0x03;
constexpr unsigned kDidBadTarget = 0x04;

constexpr unsigned char kStatusMask = 0x3E;
constexpr unsigned char kCheckCondition = 0x02;
constexpr unsigned char kDriverTimeOut = 0x06;

struct Request
{
    ByteView registers;
    sg_ata::Transfer transfer = sg_ata::Transfer::None;
    int length = 0;
    unsigned timeOutSeconds = 0;
};

/// Parses a request's header; returns nullopt where a driver would refuse it.
std::optional<Request> parse(ByteView input, int outputSize)
{
    if (input.size() < ata_request::kHeaderSize ||
        input.le16(ata_request::kLength) != ata_request::kHeaderSize)
        return std::nullopt;
    Request request;
    const quint32 length = input.le32(ata_request::kDataTransferLength);
    const quint16 flags = input.le16(ata_request::kFlags);
    if (length > quint32(ata::kSectorSize))
        return std::nullopt;
    if (length > 0) {
        if (flags & ata_request::kFlagDataIn)
            request.transfer = sg_ata::Transfer::DataIn;
        else if (flags & ata_request::kFlagDataOut)
            request.transfer = sg_ata::Transfer::DataOut;
        else
            return std::nullopt;
        if (input.le32(ata_request::kDataBufferOffset) != quint32(ata_request::kDataOffset) ||
            outputSize < ata_request::kDataOffset + int(length))
            return std::nullopt;
        if (request.transfer == sg_ata::Transfer::DataOut &&
            !input.covers(ata_request::kDataOffset, int(length)))
            return std::nullopt;
    }
    request.length = int(length);
    request.timeOutSeconds = input.le32(ata_request::kTimeOut);
    request.registers = input.mid(ata_request::kCurrentTaskFile, reg::kSize);
    return request;
}

/// The result of one SG_IO call.
struct Answer
{
    quint32 error = system_error::kNone;
    sg_ata::Verdict verdict;
    int received = 0; ///< bytes of data
};

/// Returns the error that the layers between this program and the drive report: the adapter, its driver, the
/// target's status.
quint32 transportError(unsigned hostStatus, unsigned driverStatus, unsigned char targetStatus)
{
    if (hostStatus == kDidTimeOut || (driverStatus & 0x0F) == kDriverTimeOut)
        return system_error::kSemTimeout;
    if (hostStatus == kDidNoConnect || hostStatus == kDidBadTarget)
        return system_error::kDeviceNotConnected;
    const bool isAnswer = targetStatus == 0 || targetStatus == kCheckCondition;
    return hostStatus == 0 && isAnswer ? system_error::kNone : system_error::kIoDevice;
}

int direction(sg_ata::Transfer transfer)
{
    switch (transfer) {
    case sg_ata::Transfer::None:
        return SG_DXFER_NONE;
    case sg_ata::Transfer::DataIn:
        return SG_DXFER_FROM_DEV;
    case sg_ata::Transfer::DataOut:
        return SG_DXFER_TO_DEV;
    }
    return SG_DXFER_NONE;
}

/// Returns how many bytes of data arrived. Bridges exist that report a residue although they delivered all of
/// the data, and a PIO command transfers whole sectors only: a residue counts when the bytes are empty as
/// well. The first byte does not count, because callers mark it before a read.
int receivedBytes(ByteView data, int residue)
{
    const char *const end = data.data() + data.size();
    const bool isEmpty =
        data.size() == 0 || std::all_of(data.data() + 1, end, [](char byte) { return byte == 0; });
    return isEmpty ? data.size() - std::clamp(residue, 0, data.size()) : data.size();
}

template <std::size_t Size>
Answer send(int descriptor, std::array<quint8, Size> command, const Request &request, MutableBytes data)
{
    constexpr unsigned kMillisecondsPerSecond = 1000;
    std::array<quint8, 64> sense{};
    sg_io_hdr header{};
    header.interface_id = 'S';
    header.dxfer_direction = direction(request.transfer);
    header.cmdp = command.data();
    header.cmd_len = Size;
    header.dxferp = data.data();
    header.dxfer_len = unsigned(data.size());
    header.sbp = sense.data();
    header.mx_sb_len = sense.size();
    header.timeout = request.timeOutSeconds * kMillisecondsPerSecond;

    Answer answer;
    if (::ioctl(descriptor, SG_IO, &header) != 0) {
        answer.error = errno == ENOTTY ? system_error::kNotSupported : systemErrorOf(errno);
        return answer;
    }
    answer.error = transportError(header.host_status, header.driver_status, header.status & kStatusMask);
    if ((header.status & kStatusMask) == kCheckCondition || header.sb_len_wr > 0)
        answer.verdict = sg_ata::readSense({reinterpret_cast<const char *>(sense.data()), header.sb_len_wr});
    answer.received = receivedBytes(data.view(), header.resid);
    return answer;
}

/// Sends the 16-byte command, and the 12-byte one if a bridge does not support the longer. Some bridges
/// report that in the sense data, others only with an error of the host adapter.
Answer exchange(int descriptor, const Request &request, MutableBytes data)
{
    const QByteArray before = data.view().toByteArray();
    const Answer answer =
        send(descriptor, sg_ata::longCommand(request.registers, request.transfer), request, data);
    const bool isUnknown =
        answer.error == system_error::kNone && answer.verdict.outcome == sg_ata::Outcome::NotKnown;
    if (!isUnknown && answer.error != system_error::kIoDevice)
        return answer;
    data.copyIn(0, ByteView(before));
    return send(descriptor, sg_ata::shortCommand(request.registers, request.transfer), request, data);
}

/// Returns the system error for a verdict. A command that the drive ended with its error bit set is not a
/// system error: as on Windows, the returned registers report it.
quint32 errorOf(const sg_ata::Verdict &verdict, sg_ata::Transfer transfer)
{
    switch (verdict.outcome) {
    case sg_ata::Outcome::NotKnown:
        return system_error::kNotSupported;
    case sg_ata::Outcome::NotReady:
        return system_error::kNotReady;
    case sg_ata::Outcome::Failed:
        return (verdict.registers[reg::kCommand] & reg::kStatusError) != 0 ? system_error::kNone
                                                                           : system_error::kIoDevice;
    case sg_ata::Outcome::Done:
        break;
    }
    // The registers are the whole result of a command without data; some bridges never return them.
    const bool lacksRegisters = verdict.registers[reg::kCommand] == 0;
    return transfer == sg_ata::Transfer::None && lacksRegisters ? system_error::kNotSupported
                                                                : system_error::kNone;
}

void logRefusal(const QString &node, const Answer &answer)
{
    if (answer.error == system_error::kAccessDenied)
        qCInfo(lcPlatform, "%s: ATA pass-through needs CAP_SYS_RAWIO", qPrintable(node));
    else if (answer.error == system_error::kNone && answer.verdict.outcome == sg_ata::Outcome::NotKnown)
        qCInfo(lcPlatform, "%s: the bridge or adapter in front of the drive refuses ATA pass-through",
               qPrintable(node));
}

} // namespace

ControlReply ataPassThrough(int descriptor, const QString &node, ByteView input, MutableBytes output)
{
    const std::optional<Request> request = parse(input, output.size());
    if (!request || output.size() < ata_request::kHeaderSize)
        return {system_error::kInvalidParameter, 0};
    const MutableBytes data = request->length > 0
                                  ? MutableBytes(output.data() + ata_request::kDataOffset, request->length)
                                  : MutableBytes();
    if (request->transfer == sg_ata::Transfer::DataOut) // input and output may be the same memory
        std::memmove(data.data(), input.data() + ata_request::kDataOffset, std::size_t(data.size()));

    const Answer answer = exchange(descriptor, *request, data);
    logRefusal(node, answer);
    const quint32 error =
        answer.error != system_error::kNone ? answer.error : errorOf(answer.verdict, request->transfer);
    if (error != system_error::kNone)
        return {error, 0};

    QByteArray header = input.mid(0, ata_request::kHeaderSize).toByteArray();
    header.replace(ata_request::kCurrentTaskFile, reg::kSize,
                   reinterpret_cast<const char *>(answer.verdict.registers.data()), reg::kSize);
    output.copyIn(0, ByteView(header));
    if (request->length == 0)
        return {system_error::kNone, ata_request::kHeaderSize};
    const int received = answer.verdict.outcome == sg_ata::Outcome::Done ? answer.received : 0;
    return {system_error::kNone, quint32(ata_request::kDataOffset + received)};
}

} // namespace sg_io
