// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// A kernel-mode driver for the tests: it replaces \\.\PhysicalDriveN for N from 0 on, and each drive answers
// as its file describes. It builds its answers with the system's own declarations, and so verifies the byte
// layouts of the service.

#include "windows/driver/drive_file.h"

#include <intrin.h>
// mingw's headers define these twice, which is an error in C++.
#define InterlockedBitTestAndSet ddkBitTestAndSet
#define InterlockedBitTestAndReset ddkBitTestAndReset
extern "C" {
#include <ntddk.h>
// These must be included in this order.
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
    UCHAR *buffer; // input and output
    ULONG inputSize;
    ULONG outputSize;
};

/// The result of a request: the I/O manager's status block.
struct Ending
{
    NTSTATUS status;
    ULONG_PTR size;
};

constexpr Ending kInvalid{STATUS_INVALID_PARAMETER, 0};

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

ULONG numberOf(const DEVICE_OBJECT *device)
{
    return *static_cast<const ULONG *>(device->DeviceExtension);
}

bool readDriveFile(const DEVICE_OBJECT *device, DriveFile &drive)
{
    Name path(stand_in::kFilePattern, numberOf(device));
    OBJECT_ATTRIBUTES attributes;
    InitializeObjectAttributes(&attributes, &path.string, OBJ_CASE_INSENSITIVE | OBJ_KERNEL_HANDLE, nullptr,
                               nullptr);
    constexpr ULONG kSharing = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    HANDLE file = nullptr;
    IO_STATUS_BLOCK block{};
    if (ZwOpenFile(&file, GENERIC_READ | SYNCHRONIZE, &attributes, &block, kSharing,
                   FILE_SYNCHRONOUS_IO_NONALERT) != STATUS_SUCCESS)
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
        return {STATUS_BUFFER_TOO_SMALL, 0};
    memcpy(request.buffer, &answer, sizeof(answer));
    return {STATUS_SUCCESS, sizeof(answer)};
}

Ending geometry(const Request &request)
{
    DISK_GEOMETRY answer{};
    answer.MediaType = FixedMedia;
    answer.TracksPerCylinder = 255;
    answer.SectorsPerTrack = 63;
    answer.BytesPerSector = 512;
    answer.Cylinders.QuadPart = LONGLONG(request.drive.capacity / (255ULL * 63 * 512));
    return give(request, answer);
}

Ending partition(const Request &request)
{
    if (request.drive.isGpt)
        return {STATUS_INVALID_DEVICE_REQUEST, 0};
    PARTITION_INFORMATION answer{};
    answer.PartitionLength.QuadPart = LONGLONG(request.drive.capacity);
    return give(request, answer);
}

Ending partitionEx(const Request &request)
{
    PARTITION_INFORMATION_EX answer{};
    answer.PartitionStyle = request.drive.isGpt ? PARTITION_STYLE_GPT : PARTITION_STYLE_MBR;
    answer.PartitionLength.QuadPart = LONGLONG(request.drive.capacity);
    return give(request, answer);
}

Ending length(const Request &request)
{
    GET_LENGTH_INFORMATION answer{};
    answer.Length.QuadPart = LONGLONG(request.drive.capacity);
    return give(request, answer);
}

Ending descriptor(const Request &request)
{
    if (request.inputSize < sizeof(STORAGE_PROPERTY_QUERY))
        return kInvalid;
    struct
    {
        STORAGE_DEVICE_DESCRIPTOR header;
        char product[16];
        char revision[8];
    } answer{{}, "STAND-IN", "R1"};
    answer.header.Size = sizeof(answer);
    answer.header.ProductIdOffset = sizeof(answer.header);
    answer.header.ProductRevisionOffset = sizeof(answer.header) + sizeof(answer.product);
    return give(request, answer);
}

/// Returns the sector that an ATA command reads; null for a command that the drive does not support.
const UCHAR *sectorFor(const DriveFile &drive, const IDEREGS &registers)
{
    if (registers.bCommandReg == ID_CMD)
        return drive.identify;
    if (registers.bCommandReg != SMART_CMD || registers.bCylLowReg != SMART_CYL_LOW ||
        registers.bCylHighReg != SMART_CYL_HI)
        return nullptr;
    if (registers.bFeaturesReg == READ_ATTRIBUTES)
        return drive.smartData;
    return registers.bFeaturesReg == READ_THRESHOLDS ? drive.smartThresholds : nullptr;
}

/// Answers CHECK POWER MODE, a command without data, in the sector count register.
Ending powerMode(const Request &request, IDEREGS &registers)
{
    registers.bFeaturesReg = 0;
    registers.bSectorCountReg = request.drive.isAsleep ? 0x00 : 0xFF;
    registers.bCommandReg = 0x50;
    return {STATUS_SUCCESS, sizeof(ATA_PASS_THROUGH_EX)};
}

Ending ataPassThrough(const Request &request)
{
    constexpr UCHAR kCheckPowerMode = 0xE5;
    auto *const header = reinterpret_cast<ATA_PASS_THROUGH_EX *>(request.buffer);
    if (request.inputSize < sizeof(*header) || request.outputSize < sizeof(*header) ||
        header->Length != sizeof(*header))
        return kInvalid;
    // The order of the registers is the same in both structures.
    auto *const registers = reinterpret_cast<IDEREGS *>(header->CurrentTaskFile);
    if (registers->bCommandReg == kCheckPowerMode && header->DataTransferLength == 0)
        return powerMode(request, *registers);
    if (header->DataBufferOffset < sizeof(*header) || header->DataTransferLength != 512 ||
        header->DataBufferOffset + 512 > request.outputSize || !(header->AtaFlags & ATA_FLAGS_DATA_IN))
        return kInvalid;
    const UCHAR *const sector = sectorFor(request.drive, *registers);
    if (!sector)
        return kInvalid;
    registers->bFeaturesReg = 0;   // no error
    registers->bCommandReg = 0x50; // ready
    memcpy(request.buffer + header->DataBufferOffset, sector, 512);
    return {STATUS_SUCCESS, ULONG_PTR(header->DataBufferOffset + 512)};
}

Ending predictFailure(const Request &request)
{
    STORAGE_PREDICT_FAILURE answer{};
    memcpy(answer.VendorSpecific, request.drive.smartData, sizeof(answer.VendorSpecific));
    return give(request, answer);
}

Ending answer(const Request &request, ULONG code)
{
    switch (code) {
    case IOCTL_DISK_GET_DRIVE_GEOMETRY:
        return geometry(request);
    case IOCTL_DISK_GET_PARTITION_INFO:
        return partition(request);
    case IOCTL_DISK_GET_PARTITION_INFO_EX:
        return partitionEx(request);
    case IOCTL_DISK_GET_LENGTH_INFO:
        return length(request);
    case IOCTL_STORAGE_GET_DEVICE_NUMBER:
        return give(request, STORAGE_DEVICE_NUMBER{FILE_DEVICE_DISK, request.number, 0});
    case IOCTL_STORAGE_QUERY_PROPERTY:
        return descriptor(request);
    case IOCTL_ATA_PASS_THROUGH:
        return ataPassThrough(request);
    case IOCTL_STORAGE_PREDICT_FAILURE:
        return predictFailure(request);
    default:
        return {STATUS_INVALID_DEVICE_REQUEST, 0};
    }
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
    return complete(irp, {readDriveFile(device, drive) ? STATUS_SUCCESS : STATUS_NO_SUCH_DEVICE, 0});
}

NTSTATUS WINAPI close(DEVICE_OBJECT *, IRP *irp)
{
    return complete(irp, {STATUS_SUCCESS, 0});
}

NTSTATUS WINAPI control(DEVICE_OBJECT *device, IRP *irp)
{
    const auto &parameters = IoGetCurrentIrpStackLocation(irp)->Parameters.DeviceIoControl;
    Request request{{},
                    numberOf(device),
                    static_cast<UCHAR *>(irp->AssociatedIrp.SystemBuffer),
                    parameters.InputBufferLength,
                    parameters.OutputBufferLength};
    const ULONG code = parameters.IoControlCode;
    if (!readDriveFile(device, request.drive))
        return complete(irp, {STATUS_DEVICE_NOT_CONNECTED, 0});
    if (request.drive.hanging == code)
        return hang(irp);
    if (request.drive.refused == code)
        return complete(irp, {STATUS_INVALID_DEVICE_REQUEST, 0});
    return complete(irp, answer(request, code));
}

NTSTATUS WINAPI read(DEVICE_OBJECT *device, IRP *irp)
{
    const auto &parameters = IoGetCurrentIrpStackLocation(irp)->Parameters.Read;
    DriveFile drive;
    if (!readDriveFile(device, drive))
        return complete(irp, {STATUS_DEVICE_NOT_CONNECTED, 0});
    if (drive.hanging == stand_in::kRead)
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
