// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/detection.h"

#include "disk/exchange.h"
#include "disk/identify.h"
#include "disk/logging.h"
#include "disk/storage_descriptor.h"
#include "platform/drive_requests.h"

#include <QByteArray>

namespace {

constexpr int kDetectedNumbers = 99;
constexpr int kCountedNumbers = 26;

/// The whole answer to a request without input; nullopt when it fails or comes short.
std::optional<QByteArray> ask(Drive &drive, quint32 code, int answerSize)
{
    QByteArray answer(answerSize, '\0');
    const ControlReply reply = drive.control(code, ByteView(), MutableBytes(answer));
    if (!reply.ok() || reply.bytesReturned < quint32(answerSize))
        return std::nullopt;
    return answer;
}

bool readGeometry(Drive &drive, DeviceRecord &device)
{
    namespace layout = drive_request::geometry;
    const std::optional<QByteArray> answer = ask(drive, drive_request::kDriveGeometry, layout::kSize);
    if (!answer)
        return false;
    const ByteView geometry(*answer);
    device.cylinders = qint64(geometry.le64(layout::kCylinders));
    device.mediaType = geometry.le32(layout::kMediaType);
    device.tracksPerCylinder = geometry.le32(layout::kTracksPerCylinder);
    device.sectorsPerTrack = geometry.le32(layout::kSectorsPerTrack);
    device.bytesPerSector = geometry.le32(layout::kBytesPerSector);
    return true;
}

bool readCapacity(Drive &drive, DeviceRecord &device)
{
    namespace layout = drive_request::partition;
    const std::optional<QByteArray> answer = ask(drive, drive_request::kPartitionInfo, layout::kSize);
    if (!answer)
        return false;
    device.capacity = ByteView(*answer).le64(layout::kLength);
    return true;
}

bool readDeviceNumber(Drive &drive, DeviceRecord &device)
{
    namespace layout = drive_request::device_number;
    const std::optional<QByteArray> answer = ask(drive, drive_request::kDeviceNumber, layout::kSize);
    if (!answer)
        return false;
    device.deviceNumber = qint32(ByteView(*answer).le32(layout::kDeviceNumber));
    return true;
}

void readSmartVersion(Drive &drive, DeviceRecord &device)
{
    namespace layout = drive_request::smart_version;
    const std::optional<QByteArray> answer = ask(drive, drive_request::kSmartVersion, layout::kSize);
    if (!answer)
        return;
    device.smartVersion = QString::number(ByteView(*answer).u8(layout::kVersion));
    device.smartRevision = QString::number(ByteView(*answer).u8(layout::kRevision));
}

struct Identification
{
    AccessMethod method = AccessMethod::None;
    QByteArray sector;
};

/// The IDENTIFY data by the first method that has them.
Identification identifyDrive(Drive &drive, int number, const std::optional<StorageDescriptor> &descriptor)
{
    QByteArray sector(ata::kSectorSize, '\0');
    exchange::Registers registers = exchange::identifyDevice();
    if (exchange::ataPassThrough(drive, registers, MutableBytes(sector)))
        return {AccessMethod::AtaPassThrough, sector};
    if (exchange::smartDriveCommand(drive, number, registers, MutableBytes(sector)))
        return {AccessMethod::SmartDriveData, sector};
    if (exchange::idePassThrough(drive, registers, MutableBytes(sector)))
        return {AccessMethod::IdePassThrough, sector};
    if (descriptor)
        return {AccessMethod::StorageDescriptor, identify::fromDescriptor(*descriptor)};
    return {};
}

/// The descriptor's model and firmware stand where it has them; the serial number that the drive itself tells
/// is the better one.
void applyIdentify(ByteView sector, DeviceRecord &device)
{
    device.smartSupported = identify::smartSupported(sector);
    device.smartEnabled = identify::smartEnabled(sector);
    if (device.model.isEmpty())
        device.model = identify::text(sector, identify::kModelNumber);
    if (device.firmware.isEmpty())
        device.firmware = identify::text(sector, identify::kFirmwareRevision);
    const QString serial = identify::text(sector, identify::kSerialNumber);
    if (!serial.isEmpty())
        device.serial = serial;
    const identify::AtaVersion version = identify::ataVersion(sector);
    device.ataMajor = version.major;
    device.ataVersion = version.text;
}

void identifyInto(Drive &drive, int number, DeviceRecord &device)
{
    const std::optional<StorageDescriptor> descriptor = storage_descriptor::query(drive);
    if (descriptor) {
        device.model = descriptor->model();
        device.firmware = QString::fromLatin1(descriptor->revision.trimmed());
        device.serial = QString::fromLatin1(descriptor->serial);
    }
    readSmartVersion(drive, device);
    const Identification identification = identifyDrive(drive, number, descriptor);
    device.accessMethod = identification.method;
    if (identification.method != AccessMethod::None)
        applyIdentify(ByteView(identification.sector), device);
}

} // namespace

std::optional<DeviceRecord> detection::probe(DriveSystem &drives, int number)
{
    DeviceRecord device;
    device.path = physicalDrivePath(number);
    const OpenReply opened = drives.open(device.path);
    if (!opened.drive)
        return std::nullopt;
    Drive &drive = *opened.drive;
    if (!readGeometry(drive, device) || !readCapacity(drive, device) || !readDeviceNumber(drive, device) ||
        device.mediaType != drive_request::geometry::kFixedMedia) {
        qCDebug(lcDisk) << device.path << "is left out: not a fixed disk that answers";
        return std::nullopt;
    }
    identifyInto(drive, number, device);
    qCDebug(lcDisk) << device.path << "is" << device.model << "by access method" << int(device.accessMethod);
    return device;
}

DeviceList detection::detect(DriveSystem &drives)
{
    DeviceList devices;
    for (int number = 0; number < kDetectedNumbers; ++number) {
        if (const std::optional<DeviceRecord> device = probe(drives, number))
            devices.append(*device);
    }
    return devices;
}

int detection::countFixedDrives(DriveSystem &drives)
{
    int count = 0;
    for (int number = 0; number < kCountedNumbers; ++number) {
        const OpenReply opened = drives.open(physicalDrivePath(number));
        DeviceRecord device;
        if (opened.drive && readGeometry(*opened.drive, device) &&
            device.mediaType == drive_request::geometry::kFixedMedia)
            ++count;
    }
    return count;
}
