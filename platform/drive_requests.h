// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// The control requests of the seam, on every platform: codes and byte layouts are those of the Windows
/// headers winioctl.h and ntddscsi.h in their 32-bit form, numbers little-endian.
namespace drive_request {

inline constexpr quint32 kDriveGeometry = 0x00070000;    // IOCTL_DISK_GET_DRIVE_GEOMETRY
inline constexpr quint32 kPartitionInfo = 0x00074004;    // IOCTL_DISK_GET_PARTITION_INFO
inline constexpr quint32 kSmartVersion = 0x00074080;     // SMART_GET_VERSION
inline constexpr quint32 kSmartSendCommand = 0x0007C084; // SMART_SEND_DRIVE_COMMAND
inline constexpr quint32 kSmartReceiveData = 0x0007C088; // SMART_RCV_DRIVE_DATA
inline constexpr quint32 kIdePassThrough = 0x0004D028;   // IOCTL_IDE_PASS_THROUGH
inline constexpr quint32 kAtaPassThrough = 0x0004D02C;   // IOCTL_ATA_PASS_THROUGH
inline constexpr quint32 kDeviceNumber = 0x002D1080;     // IOCTL_STORAGE_GET_DEVICE_NUMBER
inline constexpr quint32 kPredictFailure = 0x002D1100;   // IOCTL_STORAGE_PREDICT_FAILURE
inline constexpr quint32 kQueryProperty = 0x002D1400;    // IOCTL_STORAGE_QUERY_PROPERTY

/// DISK_GEOMETRY
namespace geometry {
inline constexpr int kCylinders = 0;          // 64 bits
inline constexpr int kMediaType = 8;          // 32 bits
inline constexpr int kTracksPerCylinder = 12; // 32 bits
inline constexpr int kSectorsPerTrack = 16;   // 32 bits
inline constexpr int kBytesPerSector = 20;    // 32 bits
inline constexpr int kSize = 24;
inline constexpr quint32 kFixedMedia = 12;
inline constexpr quint32 kRemovableMedia = 11;
} // namespace geometry

/// PARTITION_INFORMATION
namespace partition {
inline constexpr int kLength = 8; // 64 bits, bytes
inline constexpr int kSize = 32;
} // namespace partition

/// STORAGE_DEVICE_NUMBER
namespace device_number {
inline constexpr int kDeviceType = 0;      // 32 bits
inline constexpr int kDeviceNumber = 4;    // 32 bits
inline constexpr int kPartitionNumber = 8; // 32 bits
inline constexpr int kSize = 12;
inline constexpr quint32 kDiskDeviceType = 7; // FILE_DEVICE_DISK
} // namespace device_number

/// STORAGE_PROPERTY_QUERY and STORAGE_DEVICE_DESCRIPTOR
namespace descriptor {
inline constexpr int kQuerySize = 12;       // property id, query type, one byte and its padding: all zero
inline constexpr int kVersion = 0;          // 32 bits
inline constexpr int kDescriptorSize = 4;   // 32 bits
inline constexpr int kVendorIdOffset = 12;  // 32 bits, 0 when absent
inline constexpr int kProductIdOffset = 16; // 32 bits
inline constexpr int kProductRevisionOffset = 20; // 32 bits
inline constexpr int kSerialNumberOffset = 24;    // 32 bits
inline constexpr int kBusType = 28;               // 32 bits
inline constexpr int kHeaderSize = 36;
inline constexpr quint32 kBusTypeAta = 3; // BusTypeAta
} // namespace descriptor

/// GETVERSIONINPARAMS
namespace smart_version {
inline constexpr int kVersion = 0;  // 8 bits
inline constexpr int kRevision = 1; // 8 bits
inline constexpr int kSize = 24;
} // namespace smart_version

/// The register block that every ATA exchange carries: one byte each.
namespace registers {
inline constexpr int kFeatures = 0; // the error register on return
inline constexpr int kSectorCount = 1;
inline constexpr int kLbaLow = 2;
inline constexpr int kLbaMid = 3;
inline constexpr int kLbaHigh = 4;
inline constexpr int kDevice = 5;
inline constexpr int kCommand = 6; // the status register on return
inline constexpr int kReserved = 7;
inline constexpr int kSize = 8;
inline constexpr quint8 kStatusError = 0x01;  // ERR
inline constexpr quint8 kErrorAborted = 0x04; // ABRT
} // namespace registers

/// ATA_PASS_THROUGH_EX, 32-bit form, in one buffer with its data
namespace ata_pass_through {
inline constexpr int kLength = 0;             // 16 bits
inline constexpr int kFlags = 2;              // 16 bits
inline constexpr int kDataTransferLength = 8; // 32 bits
inline constexpr int kTimeOut = 12;           // 32 bits, seconds
inline constexpr int kDataBufferOffset = 20;  // 32 bits
inline constexpr int kPreviousTaskFile = 24;  // registers::kSize bytes
inline constexpr int kCurrentTaskFile = 32;   // registers::kSize bytes
inline constexpr int kHeaderSize = 40;
inline constexpr int kDataOffset = 44;
inline constexpr quint16 kFlagDataIn = 2;
inline constexpr quint16 kFlagDataOut = 4;
} // namespace ata_pass_through

/// The older pass-through: registers, length, data
namespace ide_pass_through {
inline constexpr int kRegisters = 0;
inline constexpr int kDataLength = 8; // 32 bits
inline constexpr int kDataOffset = 12;
} // namespace ide_pass_through

/// SENDCMDINPARAMS and SENDCMDOUTPARAMS
namespace send_command {
inline constexpr int kBufferSize = 0;        // 32 bits
inline constexpr int kRegisters = 4;         // registers::kSize bytes
inline constexpr int kDriveNumber = 12;      // 8 bits
inline constexpr int kInputSize = 32;        // up to bBuffer
inline constexpr int kOutputBufferSize = 0;  // 32 bits
inline constexpr int kOutputDriverError = 4; // 8 bits, DRIVERSTATUS.bDriverError
inline constexpr int kOutputIdeError = 5;    // 8 bits
inline constexpr int kOutputHeaderSize = 16;
inline constexpr int kOutputRegistersSize = 24; // SMART RETURN STATUS hands registers back
} // namespace send_command

/// STORAGE_PREDICT_FAILURE
namespace predict_failure {
inline constexpr int kPredictFailure = 0; // 32 bits, non-zero when the drive predicts its failure
inline constexpr int kVendorSpecific = 4;
inline constexpr int kSize = 516;
} // namespace predict_failure

} // namespace drive_request

/// The commands that the exchanges send to the drive itself (ATA/ATAPI command set).
namespace ata {

inline constexpr int kSectorSize = 512;
inline constexpr quint8 kIdentifyDevice = 0xEC;
inline constexpr quint8 kCheckPowerMode = 0xE5;
inline constexpr quint8 kPowerStandby = 0x00; // in the sector count register, after CHECK POWER MODE
inline constexpr quint8 kPowerStandbyY = 0x01;
inline constexpr quint8 kPowerActive = 0xFF;
inline constexpr quint8 kSmart = 0xB0;
inline constexpr quint8 kSmartReadData = 0xD0;
inline constexpr quint8 kSmartReadThresholds = 0xD1;
inline constexpr quint8 kSmartReturnStatus = 0xDA;
inline constexpr quint8 kSmartLbaMid = 0x4F;
inline constexpr quint8 kSmartLbaHigh = 0xC2;

} // namespace ata
