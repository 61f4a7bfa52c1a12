// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/drive_answers.h"

#include "platform/drive_requests.h"
#include "platform/simulated/ata_commands.h"
#include "platform/simulated/sectors.h"

#include <algorithm>
#include <iterator>

using namespace drive_request;

namespace {

constexpr quint32 kLongestTimeOutSeconds = 30 * 3600; // the limit of the system's own drivers

ControlReply refused(quint32 error)
{
    return {error, 0};
}

ControlReply answered(int bytesReturned)
{
    return {system_error::kNone, quint32(bytesReturned)};
}

bool isZero(ByteView bytes)
{
    return std::all_of(bytes.data(), bytes.data() + bytes.size(), [](char c) { return c == 0; });
}

void clear(MutableBytes output, int size)
{
    std::fill_n(output.data(), size, '\0');
}

ControlReply answerGeometry(const DriveState &drive, ByteView, MutableBytes output)
{
    if (output.size() < geometry::kSize)
        return refused(system_error::kInsufficientBuffer);
    output.setLe64(geometry::kCylinders, quint64(drive.geometry.cylinders));
    output.setLe32(geometry::kMediaType, drive.mediaType);
    output.setLe32(geometry::kTracksPerCylinder, drive.geometry.tracksPerCylinder);
    output.setLe32(geometry::kSectorsPerTrack, drive.geometry.sectorsPerTrack);
    output.setLe32(geometry::kBytesPerSector, drive.bytesPerSector);
    return answered(geometry::kSize);
}

ControlReply answerPartition(const DriveState &drive, ByteView, MutableBytes output)
{
    if (output.size() < partition::kSize)
        return refused(system_error::kInsufficientBuffer);
    clear(output, partition::kSize); // the whole disk: starts at 0, number 0, no type
    output.setLe64(partition::kLength, drive.capacityBytes);
    return answered(partition::kSize);
}

ControlReply answerDeviceNumber(const DriveState &drive, ByteView, MutableBytes output)
{
    if (output.size() < device_number::kSize)
        return refused(system_error::kInsufficientBuffer);
    output.setLe32(device_number::kDeviceType, device_number::kDiskDeviceType);
    output.setLe32(device_number::kDeviceNumber, drive.deviceNumber);
    output.setLe32(device_number::kPartitionNumber, 0);
    return answered(device_number::kSize);
}

/// Appends a NUL-terminated text and notes its offset in the header; a drive without it has offset 0.
void appendDescriptorText(QByteArray &bytes, int offsetField, const QString &text)
{
    if (text.isEmpty())
        return;
    MutableBytes(bytes).setLe32(offsetField, quint32(bytes.size()));
    bytes += text.toLatin1() + '\0';
}

QByteArray storageDescriptor(const DescriptorState &state)
{
    constexpr quint32 kVersion = 40; // sizeof(STORAGE_DEVICE_DESCRIPTOR)
    constexpr int kRawPropertiesLength = 32;
    QByteArray bytes(descriptor::kHeaderSize, '\0');
    appendDescriptorText(bytes, descriptor::kVendorIdOffset, state.vendor);
    appendDescriptorText(bytes, descriptor::kProductIdOffset, state.product);
    appendDescriptorText(bytes, descriptor::kProductRevisionOffset, state.revision);
    appendDescriptorText(bytes, descriptor::kSerialNumberOffset, state.serial);
    const MutableBytes header(bytes);
    header.setLe32(descriptor::kVersion, kVersion);
    header.setLe32(descriptor::kDescriptorSize, quint32(bytes.size()));
    header.setLe32(descriptor::kBusType, descriptor::kBusTypeAta);
    header.setLe32(kRawPropertiesLength, quint32(bytes.size() - descriptor::kHeaderSize));
    return bytes;
}

ControlReply answerProperty(const DriveState &drive, ByteView input, MutableBytes output)
{
    constexpr int kVersionAndSize = 8; // callers request these first, to learn the whole size
    if (input.size() < descriptor::kQuerySize || output.size() < kVersionAndSize)
        return refused(system_error::kInsufficientBuffer);
    if (!isZero(input.mid(0, descriptor::kQuerySize)))
        return refused(system_error::kInvalidParameter);
    const QByteArray bytes = storageDescriptor(drive.descriptor);
    const ByteView part = ByteView(bytes).mid(0, output.size());
    output.copyIn(0, part);
    return answered(part.size());
}

ControlReply answerSmartVersion(const DriveState &, ByteView, MutableBytes output)
{
    constexpr int kDeviceMap = 3;
    constexpr int kCapabilities = 4;
    constexpr quint32 kIdentifyAndSmart = 0x05; // CAP_ATA_ID_CMD, CAP_SMART_CMD
    if (output.size() < smart_version::kSize)
        return refused(system_error::kInsufficientBuffer);
    clear(output, smart_version::kSize);
    output.setU8(smart_version::kVersion, 1);
    output.setU8(smart_version::kRevision, 1);
    output.setU8(kDeviceMap, 1);
    output.setLe32(kCapabilities, kIdentifyAndSmart);
    return answered(smart_version::kSize);
}

bool transferSuits(AtaCommand command, quint16 flags, quint32 length, quint32 offset)
{
    using namespace ata_pass_through;
    if (flags != 0 && offset != quint32(kDataOffset))
        return false;
    if (readsSector(command))
        return flags == kFlagDataIn && length == quint32(ata::kSectorSize);
    if (command == AtaCommand::SmartStatus || command == AtaCommand::CheckPower)
        return (flags == 0 || flags == kFlagDataIn) && length == 0;
    const bool oneWay = flags == 0 || flags == kFlagDataIn || flags == kFlagDataOut;
    return oneWay && length <= quint32(flags == 0 ? 0 : ata::kSectorSize);
}

bool ataHeaderSuits(ByteView header)
{
    using namespace ata_pass_through;
    constexpr int kAddress = 4; // path, target, LUN and a reserved byte
    constexpr int kReserved = 16;
    const quint32 timeOutSeconds = header.le32(kTimeOut);
    const ByteView taskFile = header.mid(kCurrentTaskFile, registers::kSize);
    return header.le16(kLength) == kHeaderSize && isZero(header.mid(kAddress, 4)) &&
           isZero(header.mid(kReserved, 4)) && isZero(header.mid(kPreviousTaskFile, registers::kSize)) &&
           timeOutSeconds >= 1 && timeOutSeconds <= kLongestTimeOutSeconds && registersSuit(taskFile) &&
           transferSuits(ataCommand(taskFile), header.le16(kFlags), header.le32(kDataTransferLength),
                         header.le32(kDataBufferOffset));
}

ControlReply answerAtaPassThrough(const DriveState &drive, ByteView input, MutableBytes output)
{
    using namespace ata_pass_through;
    const QByteArray header = input.mid(0, kHeaderSize).toByteArray(); // the output may be the same memory
    const ByteView request(header);
    if (request.size() < kHeaderSize)
        return refused(system_error::kInsufficientBuffer);
    if (!ataHeaderSuits(request))
        return refused(system_error::kInvalidParameter);
    const int dataEnd = kDataOffset + int(request.le32(kDataTransferLength));
    const bool hasData = request.le16(kFlags) != 0;
    if (output.size() < (hasData ? dataEnd : kHeaderSize))
        return refused(system_error::kInsufficientBuffer);
    const AtaAnswer answer = executeAta(drive, request.mid(kCurrentTaskFile, registers::kSize));
    output.copyIn(0, request);
    output.copyIn(kCurrentTaskFile, ByteView(answer.registerBlock));
    output.setLe32(kDataTransferLength, quint32(answer.data.size()));
    if (!hasData)
        return answered(kHeaderSize);
    output.copyIn(kDataOffset, ByteView(answer.data));
    return answered(kDataOffset + answer.data.size());
}

ControlReply answerIdePassThrough(const DriveState &drive, ByteView input, MutableBytes output)
{
    using namespace ide_pass_through;
    const QByteArray header = input.mid(0, kDataOffset).toByteArray(); // the output may be the same memory
    const ByteView request(header);
    if (request.size() < kDataOffset)
        return refused(system_error::kInsufficientBuffer);
    const ByteView taskFile = request.mid(kRegisters, registers::kSize);
    const AtaCommand command = ataCommand(taskFile);
    const quint32 length = request.le32(kDataLength);
    const bool lengthSuits = command == AtaCommand::Unknown
                                 ? length <= quint32(ata::kSectorSize)
                                 : length == quint32(readsSector(command) ? ata::kSectorSize : 0);
    if (!lengthSuits || !registersSuit(taskFile))
        return refused(system_error::kInvalidParameter);
    if (output.size() < kDataOffset + int(length))
        return refused(system_error::kInsufficientBuffer);
    const AtaAnswer answer = executeAta(drive, taskFile);
    output.copyIn(kRegisters, ByteView(answer.registerBlock));
    output.setLe32(kDataLength, quint32(answer.data.size()));
    output.copyIn(kDataOffset, ByteView(answer.data));
    return answered(kDataOffset + answer.data.size());
}

/// Returns whether SENDCMDINPARAMS holds `dataSize` and valid registers: the device register selects the
/// drive by its place on the cable, which is its number's lowest bit.
bool commandSuits(ByteView request, int dataSize)
{
    using namespace send_command;
    const ByteView taskFile = request.mid(kRegisters, registers::kSize);
    const quint8 device = quint8(0xA0 | (request.u8(kDriveNumber) & 1) << 4);
    return request.le32(kBufferSize) == quint32(dataSize) && taskFile.u8(registers::kDevice) == device &&
           registersSuit(taskFile);
}

/// Fills in SENDCMDOUTPARAMS, followed by `payload`.
ControlReply answerCommand(const AtaAnswer &answer, const QByteArray &payload, MutableBytes output)
{
    using namespace send_command;
    constexpr quint8 kDriverErrorIde = 1; // SMART_IDE_ERROR: the drive's error register has the reason
    clear(output, kOutputHeaderSize);
    if (answer.aborted) {
        output.setU8(kOutputDriverError, kDriverErrorIde);
        output.setU8(kOutputIdeError, ByteView(answer.registerBlock).u8(registers::kFeatures));
        return answered(kOutputHeaderSize);
    }
    output.setLe32(kOutputBufferSize, quint32(payload.size()));
    output.copyIn(kOutputHeaderSize, ByteView(payload));
    return answered(kOutputHeaderSize + payload.size());
}

ControlReply answerSmartReceive(const DriveState &drive, ByteView input, MutableBytes output)
{
    using namespace send_command;
    if (input.size() < kInputSize || output.size() < kOutputHeaderSize + ata::kSectorSize)
        return refused(system_error::kInsufficientBuffer);
    const QByteArray taskFile = input.mid(kRegisters, registers::kSize).toByteArray();
    if (!commandSuits(input, ata::kSectorSize) || ataCommand(ByteView(taskFile)) == AtaCommand::SmartStatus)
        return refused(system_error::kInvalidParameter);
    const AtaAnswer answer = executeAta(drive, ByteView(taskFile));
    return answerCommand(answer, answer.data, output);
}

ControlReply answerSmartSend(const DriveState &drive, ByteView input, MutableBytes output)
{
    using namespace send_command;
    const QByteArray taskFile = input.mid(kRegisters, registers::kSize).toByteArray();
    const AtaCommand command = ataCommand(ByteView(taskFile));
    const bool returnsRegisters = command == AtaCommand::SmartStatus;
    if (input.size() < kInputSize ||
        output.size() < (returnsRegisters ? kOutputRegistersSize : kOutputHeaderSize))
        return refused(system_error::kInsufficientBuffer);
    if (!commandSuits(input, 0) || readsSector(command))
        return refused(system_error::kInvalidParameter);
    const AtaAnswer answer = executeAta(drive, ByteView(taskFile));
    return answerCommand(answer, returnsRegisters ? answer.registerBlock : QByteArray(), output);
}

ControlReply answerPredictFailure(const DriveState &drive, ByteView, MutableBytes output)
{
    using namespace predict_failure;
    if (output.size() < kSize)
        return refused(system_error::kInsufficientBuffer);
    if (!drive.smart.enabled)
        return refused(system_error::kNotSupported);
    const bool predicted = predictsFailure(ByteView(drive.smartData), ByteView(drive.smartThresholds));
    output.setLe32(predict_failure::kPredictFailure, predicted ? 1 : 0);
    output.copyIn(kVendorSpecific, ByteView(drive.smartData));
    return answered(kSize);
}

struct RequestKind
{
    quint32 code;
    const QString &answer;
    ControlReply (*handle)(const DriveState &drive, ByteView input, MutableBytes output);
};

const RequestKind *requestKind(quint32 code)
{
    static const RequestKind kinds[] = {
        {kDriveGeometry, answer_name::kGeometry, answerGeometry},
        {kPartitionInfo, answer_name::kPartition, answerPartition},
        {kDeviceNumber, answer_name::kDeviceNumber, answerDeviceNumber},
        {kQueryProperty, answer_name::kDescriptor, answerProperty},
        {kSmartVersion, answer_name::kSmartVersion, answerSmartVersion},
        {kAtaPassThrough, answer_name::kAta, answerAtaPassThrough},
        {kIdePassThrough, answer_name::kIde, answerIdePassThrough},
        {kSmartReceiveData, answer_name::kSmart, answerSmartReceive},
        {kSmartSendCommand, answer_name::kSmart, answerSmartSend},
        {drive_request::kPredictFailure, answer_name::kPredict, answerPredictFailure},
    };
    const auto kind = std::find_if(std::begin(kinds), std::end(kinds),
                                   [code](const RequestKind &each) { return each.code == code; });
    return kind == std::end(kinds) ? nullptr : kind;
}

/// Returns the offset of the register block in a request of this code; -1 if it has none.
int registersOffset(quint32 code)
{
    switch (code) {
    case kAtaPassThrough:
        return ata_pass_through::kCurrentTaskFile;
    case kIdePassThrough:
        return ide_pass_through::kRegisters;
    case kSmartReceiveData:
        return send_command::kRegisters;
    default:
        return -1;
    }
}

} // namespace

ControlReply answerRequest(const DriveState &drive, quint32 code, ByteView input, MutableBytes output)
{
    const RequestKind *kind = requestKind(code);
    if (!kind)
        return refused(system_error::kInvalidFunction);
    if (!drive.answers.contains(kind->answer))
        return refused(system_error::kNotSupported);
    return kind->handle(drive, input, output);
}

AtaCommand requestedCommand(quint32 code, ByteView input)
{
    return ataCommand(input.mid(registersOffset(code), registers::kSize));
}

RequestCost requestCost(const DriveState &drive, quint32 code, ByteView input)
{
    const AtaCommand command = requestedCommand(code, input);
    if (code == drive_request::kPredictFailure || command == AtaCommand::SmartData ||
        command == AtaCommand::SmartThresholds)
        return {drive.smartDelayMs, drive.hangs.contains(hang_name::kSmart)};
    if (command == AtaCommand::Identify)
        return {drive.identifyDelayMs, drive.hangs.contains(hang_name::kIdentify)};
    if (code == kDriveGeometry)
        return {drive.identifyDelayMs, drive.hangs.contains(hang_name::kGeometry)};
    return {code == kQueryProperty ? drive.identifyDelayMs : 0, false};
}
