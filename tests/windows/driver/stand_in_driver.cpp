// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// A kernel-mode driver for the tests: \\.\PhysicalDriveN for N from 0 on, in the place of whatever had these
// names, each answering as its file says. It builds its answers with the system's own declarations, which
// makes it a witness against the byte layouts that the service brings along.

#include "windows/driver/drive_file.h"

#include <intrin.h>
// mingw's headers define these twice, which C++ does not take.
#define InterlockedBitTestAndSet ddkBitTestAndSet
#define InterlockedBitTestAndReset ddkBitTestAndReset
extern "C" {
#include <ntddk.h>
// The order matters to these.
#include <ntdddisk.h>
#include <ntddscsi.h>
#include <ntddstor.h>
#include <wchar.h>
}

namespace {

using stand_in::DriveFile;

struct Request
{
    DriveFile drive;
    ULONG number;
    ULONG kind;
    UCHAR *buffer; // input and output
    ULONG inputSize;
    ULONG outputSize;
};

/// How a request ends: what the I/O manager calls its status block.
struct Ending
{
    NTSTATUS status;
    ULONG_PTR size;
};

constexpr Ending kRefused{STATUS_INVALID_DEVICE_REQUEST, 0};
constexpr Ending kTooSmall{STATUS_BUFFER_TOO_SMALL, 0};
constexpr UCHAR kStatusReady = 0x50;
constexpr UCHAR kStatusError = 0x51;
constexpr UCHAR kErrorAborted = 0x04;

bool readDriveFile(ULONG number, DriveFile &drive)
{
    WCHAR path[64] = L"\\??\\";
    _snwprintf(path + 4, 60, stand_in::kFilePattern, unsigned(number));
    UNICODE_STRING name;
    RtlInitUnicodeString(&name, path);
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &name, OBJ_CASE_INSENSITIVE | OBJ_KERNEL_HANDLE, nullptr,
                               nullptr);
    HANDLE file = nullptr;
    IO_STATUS_BLOCK block{};
    if (ZwCreateFile(&file, GENERIC_READ | SYNCHRONIZE, &attributes, &block, nullptr, 0,
                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, FILE_OPEN,
                     FILE_SYNCHRONOUS_IO_NONALERT | FILE_NON_DIRECTORY_FILE, nullptr, 0) != STATUS_SUCCESS)
        return false;
    LARGE_INTEGER start{};
    const NTSTATUS status =
        ZwReadFile(file, nullptr, nullptr, nullptr, &block, &drive, sizeof(drive), &start, nullptr);
    ZwClose(file);
    return status == STATUS_SUCCESS && block.Information == sizeof(drive);
}

template <typename Answer>
Ending give(const Request &request, const Answer &answer)
{
    if (request.outputSize < sizeof(answer))
        return kTooSmall;
    memcpy(request.buffer, &answer, sizeof(answer));
    return {STATUS_SUCCESS, sizeof(answer)};
}

bool isFailing(const Request &request)
{
    return (request.drive.failing & request.kind) != 0;
}

/// The sector that an ATA command reads; null for a command that the drive does not know.
const UCHAR *sectorFor(const Request &request, UCHAR command, UCHAR features, UCHAR cylinderLow,
                       UCHAR cylinderHigh)
{
    if (isFailing(request))
        return nullptr;
    if (command == ID_CMD)
        return request.drive.identify;
    if (command != SMART_CMD || cylinderLow != SMART_CYL_LOW || cylinderHigh != SMART_CYL_HI)
        return nullptr;
    if (features == READ_ATTRIBUTES)
        return request.drive.smartData;
    return features == READ_THRESHOLDS ? request.drive.smartThresholds : nullptr;
}

Ending geometry(const Request &request)
{
    DISK_GEOMETRY answer{};
    answer.MediaType = MEDIA_TYPE(request.drive.mediaType);
    answer.TracksPerCylinder = 255;
    answer.SectorsPerTrack = 63;
    answer.BytesPerSector = 512;
    answer.Cylinders.QuadPart = LONGLONG(request.drive.capacity / (255ULL * 63 * 512));
    return give(request, answer);
}

Ending partition(const Request &request)
{
    PARTITION_INFORMATION answer{};
    answer.PartitionLength.QuadPart = LONGLONG(request.drive.capacity);
    return give(request, answer);
}

Ending deviceNumber(const Request &request)
{
    STORAGE_DEVICE_NUMBER answer{};
    answer.DeviceType = FILE_DEVICE_DISK;
    answer.DeviceNumber = request.number;
    return give(request, answer);
}

Ending descriptor(const Request &request)
{
    if (request.inputSize < sizeof(STORAGE_PROPERTY_QUERY))
        return {STATUS_INVALID_PARAMETER, 0};
    struct
    {
        STORAGE_DEVICE_DESCRIPTOR header;
        char product[16];
        char revision[8];
    } answer{{}, "STAND-IN", "R1"};
    answer.header.Version = sizeof(answer.header);
    answer.header.Size = sizeof(answer);
    answer.header.ProductIdOffset = sizeof(answer.header);
    answer.header.ProductRevisionOffset = sizeof(answer.header) + sizeof(answer.product);
    answer.header.BusType = BusTypeAta;
    return give(request, answer);
}

Ending smartVersion(const Request &request)
{
    GETVERSIONINPARAMS answer{};
    answer.bVersion = 1;
    answer.bRevision = 1;
    answer.fCapabilities = 7;
    return give(request, answer);
}

Ending ataPassThrough(const Request &request)
{
    auto *const header = reinterpret_cast<ATA_PASS_THROUGH_EX *>(request.buffer);
    if (request.inputSize < sizeof(*header) || header->Length != sizeof(*header) ||
        header->DataBufferOffset < sizeof(*header) || header->DataTransferLength != 512 ||
        header->DataBufferOffset + 512 > request.outputSize || !(header->AtaFlags & ATA_FLAGS_DATA_IN))
        return {STATUS_INVALID_PARAMETER, 0};
    UCHAR *const registers = header->CurrentTaskFile;
    const UCHAR *const sector = sectorFor(request, registers[6], registers[0], registers[3], registers[4]);
    registers[0] = sector ? 0 : kErrorAborted;
    registers[6] = sector ? kStatusReady : kStatusError;
    if (sector)
        memcpy(request.buffer + header->DataBufferOffset, sector, 512);
    return {STATUS_SUCCESS, ULONG_PTR(header->DataBufferOffset + 512)};
}

Ending idePassThrough(const Request &request)
{
    // Registers, length, data: this request has no declaration of the system's.
    auto *const registers = reinterpret_cast<IDEREGS *>(request.buffer);
    constexpr ULONG kDataOffset = sizeof(IDEREGS) + sizeof(ULONG);
    if (request.inputSize < kDataOffset || request.outputSize < kDataOffset + 512)
        return {STATUS_INVALID_PARAMETER, 0};
    const UCHAR *const sector = sectorFor(request, registers->bCommandReg, registers->bFeaturesReg,
                                          registers->bCylLowReg, registers->bCylHighReg);
    registers->bFeaturesReg = sector ? 0 : kErrorAborted;
    registers->bCommandReg = sector ? kStatusReady : kStatusError;
    if (sector)
        memcpy(request.buffer + kDataOffset, sector, 512);
    return {STATUS_SUCCESS, kDataOffset + 512};
}

Ending smartReceiveData(const Request &request)
{
    constexpr ULONG kInputSize = sizeof(SENDCMDINPARAMS) - 1; // without the first byte of data
    constexpr ULONG kDataOffset = sizeof(SENDCMDOUTPARAMS) - 1;
    if (request.inputSize < kInputSize || request.outputSize < kDataOffset + 512)
        return {STATUS_INVALID_PARAMETER, 0};
    const auto input = *reinterpret_cast<const SENDCMDINPARAMS *>(request.buffer);
    const IDEREGS &registers = input.irDriveRegs;
    const UCHAR *const sector = sectorFor(request, registers.bCommandReg, registers.bFeaturesReg,
                                          registers.bCylLowReg, registers.bCylHighReg);
    auto *const output = reinterpret_cast<SENDCMDOUTPARAMS *>(request.buffer);
    memset(output, 0, kDataOffset);
    output->cBufferSize = 512;
    output->DriverStatus.bDriverError = sector ? 0 : SMART_IDE_ERROR;
    output->DriverStatus.bIDEError = sector ? 0 : kErrorAborted;
    if (sector)
        memcpy(output->bBuffer, sector, 512);
    return {STATUS_SUCCESS, kDataOffset + 512};
}

Ending predictFailure(const Request &request)
{
    STORAGE_PREDICT_FAILURE answer{};
    memcpy(answer.VendorSpecific, request.drive.smartData, sizeof(answer.VendorSpecific));
    return give(request, answer);
}

struct Handler
{
    ULONG code;
    ULONG kind;
    bool answersItsOwnFailure; // in registers, with a request that succeeds
    Ending (*answer)(const Request &request);
};

constexpr Handler kHandlers[] = {
    {IOCTL_DISK_GET_DRIVE_GEOMETRY, stand_in::kGeometry, false, geometry},
    {IOCTL_DISK_GET_PARTITION_INFO, stand_in::kPartition, false, partition},
    {IOCTL_STORAGE_GET_DEVICE_NUMBER, stand_in::kDeviceNumber, false, deviceNumber},
    {IOCTL_STORAGE_QUERY_PROPERTY, stand_in::kDescriptor, false, descriptor},
    {SMART_GET_VERSION, stand_in::kSmartVersion, false, smartVersion},
    {IOCTL_ATA_PASS_THROUGH, stand_in::kAta, true, ataPassThrough},
    {SMART_RCV_DRIVE_DATA, stand_in::kSmart, true, smartReceiveData},
    {IOCTL_IDE_PASS_THROUGH, stand_in::kIde, true, idePassThrough},
    {IOCTL_STORAGE_PREDICT_FAILURE, stand_in::kPredict, false, predictFailure},
};

ULONG numberOf(const DEVICE_OBJECT *device)
{
    return *static_cast<const ULONG *>(device->DeviceExtension);
}

NTSTATUS complete(IRP *irp, const Ending &ending)
{
    irp->IoStatus.Status = ending.status;
    irp->IoStatus.Information = ending.size;
    IoCompleteRequest(irp, IO_NO_INCREMENT);
    return ending.status;
}

void WINAPI cancelled(DEVICE_OBJECT *, IRP *irp)
{
    IoReleaseCancelSpinLock(irp->CancelIrql);
    complete(irp, {STATUS_CANCELLED, 0});
}

NTSTATUS hang(IRP *irp)
{
    IoMarkIrpPending(irp);
    IoSetCancelRoutine(irp, cancelled);
    return STATUS_PENDING;
}

NTSTATUS WINAPI open(DEVICE_OBJECT *device, IRP *irp)
{
    DriveFile drive;
    const bool isThere = readDriveFile(numberOf(device), drive);
    return complete(irp, {isThere ? STATUS_SUCCESS : STATUS_NO_SUCH_DEVICE, 0});
}

NTSTATUS WINAPI close(DEVICE_OBJECT *, IRP *irp)
{
    return complete(irp, {STATUS_SUCCESS, 0});
}

NTSTATUS WINAPI control(DEVICE_OBJECT *device, IRP *irp)
{
    const auto &parameters = IoGetCurrentIrpStackLocation(irp)->Parameters.DeviceIoControl;
    Request request{};
    request.number = numberOf(device);
    if (!readDriveFile(request.number, request.drive))
        return complete(irp, {STATUS_DEVICE_NOT_CONNECTED, 0});
    request.buffer = static_cast<UCHAR *>(irp->AssociatedIrp.SystemBuffer);
    request.inputSize = parameters.InputBufferLength;
    request.outputSize = parameters.OutputBufferLength;
    for (const Handler &handler : kHandlers) {
        if (handler.code != parameters.IoControlCode || !(request.drive.answered & handler.kind))
            continue;
        request.kind = handler.kind;
        if (request.drive.hanging & handler.kind)
            return hang(irp);
        if (isFailing(request) && !handler.answersItsOwnFailure)
            return complete(irp, {STATUS_IO_DEVICE_ERROR, 0});
        return complete(irp, handler.answer(request));
    }
    return complete(irp, kRefused);
}

NTSTATUS WINAPI read(DEVICE_OBJECT *device, IRP *irp)
{
    const auto &parameters = IoGetCurrentIrpStackLocation(irp)->Parameters.Read;
    DriveFile drive;
    if (!readDriveFile(numberOf(device), drive))
        return complete(irp, {STATUS_DEVICE_NOT_CONNECTED, 0});
    if (drive.hanging & stand_in::kRead)
        return hang(irp);
    const auto begin = std::uint64_t(parameters.ByteOffset.QuadPart);
    const std::uint64_t end = begin + parameters.Length;
    if (end > drive.capacity)
        return complete(irp, {STATUS_END_OF_FILE, 0});
    if (begin < drive.badEnd && end > drive.badBegin)
        return complete(irp, {STATUS_DEVICE_DATA_ERROR, 0});
    memset(irp->AssociatedIrp.SystemBuffer, 0, parameters.Length);
    return complete(irp, {STATUS_SUCCESS, parameters.Length});
}

/// The Nth name of a pattern, in a buffer of its own.
struct Name
{
    Name(const WCHAR *pattern, ULONG number)
    {
        _snwprintf(text, 64, pattern, unsigned(number));
        RtlInitUnicodeString(&string, text);
    }

    WCHAR text[64] = {};
    UNICODE_STRING string;
};

constexpr WCHAR kDeviceName[] = L"\\Device\\HalvexStandIn%u";
constexpr WCHAR kLinkName[] = L"\\DosDevices\\PhysicalDrive%u";

NTSTATUS addDrive(DRIVER_OBJECT *driver, ULONG number)
{
    Name name(kDeviceName, number);
    Name link(kLinkName, number);
    DEVICE_OBJECT *device = nullptr;
    const NTSTATUS status =
        IoCreateDevice(driver, sizeof(ULONG), &name.string, FILE_DEVICE_DISK, 0, FALSE, &device);
    if (status != STATUS_SUCCESS)
        return status;
    *static_cast<ULONG *>(device->DeviceExtension) = number;
    device->Flags |= DO_BUFFERED_IO;
    device->Flags &= ~ULONG(DO_DEVICE_INITIALIZING);
    IoDeleteSymbolicLink(&link.string);
    return IoCreateSymbolicLink(&link.string, &name.string);
}

void WINAPI unload(DRIVER_OBJECT *driver)
{
    while (DEVICE_OBJECT *const device = driver->DeviceObject) {
        Name link(kLinkName, numberOf(device));
        IoDeleteSymbolicLink(&link.string);
        IoDeleteDevice(device);
    }
}

} // namespace

extern "C" NTSTATUS WINAPI DriverEntry(DRIVER_OBJECT *driver, UNICODE_STRING *)
{
    driver->MajorFunction[IRP_MJ_CREATE] = open;
    driver->MajorFunction[IRP_MJ_CLEANUP] = close;
    driver->MajorFunction[IRP_MJ_CLOSE] = close;
    driver->MajorFunction[IRP_MJ_DEVICE_CONTROL] = control;
    driver->MajorFunction[IRP_MJ_READ] = read;
    driver->DriverUnload = unload;
    NTSTATUS status = STATUS_SUCCESS;
    for (ULONG number = 0; number < stand_in::kDriveNumbers && status == STATUS_SUCCESS; ++number)
        status = addDrive(driver, number);
    return status;
}
