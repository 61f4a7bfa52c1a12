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

using Answer = Result<QByteArray, quint32>;

/// Returns the whole answer to a request without input. A short answer is a failure.
Answer ask(Drive &drive, quint32 code, int answerSize)
{
    QByteArray answer(answerSize, '\0');
    const ControlReply reply = drive.control(code, ByteView(), MutableBytes(answer));
    if (!reply.ok())
        return reply.error;
    if (reply.bytesReturned < quint32(answerSize))
        return system_error::kBadLength;
    return answer;
}

void setGeometry(ByteView geometry, DetectedDrive &device)
{
    namespace layout = drive_request::geometry;
    device.cylinders = qint64(geometry.le64(layout::kCylinders));
    device.mediaType = geometry.le32(layout::kMediaType);
    device.tracksPerCylinder = geometry.le32(layout::kTracksPerCylinder);
    device.sectorsPerTrack = geometry.le32(layout::kSectorsPerTrack);
    device.bytesPerSector = geometry.le32(layout::kBytesPerSector);
}

void readSmartVersion(Drive &drive, DetectedDrive &device)
{
    namespace layout = drive_request::smart_version;
    const Answer answer = ask(drive, drive_request::kSmartVersion, layout::kSize);
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

/// Reads the IDENTIFY data by the first method that answers.
Identification readIdentity(Drive &drive, int number, const std::optional<StorageDescriptor> &descriptor)
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

/// Uses the descriptor's model and firmware where it has them. A serial number from the drive itself replaces
/// the descriptor's.
void applyIdentify(ByteView sector, DetectedDrive &device)
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

/// Returns whether both are known and differ.
bool differ(const QString &a, const QString &b)
{
    return !a.isEmpty() && !b.isEmpty() && a != b;
}

} // namespace

namespace detection {

Result<void, quint32> readBasics(Drive &drive, DetectedDrive &device)
{
    const Answer geometry = ask(drive, drive_request::kDriveGeometry, drive_request::geometry::kSize);
    if (!geometry)
        return geometry.failure();
    setGeometry(ByteView(*geometry), device);
    const Answer partition = ask(drive, drive_request::kPartitionInfo, drive_request::partition::kSize);
    if (!partition)
        return partition.failure();
    device.capacity = ByteView(*partition).le64(drive_request::partition::kLength);
    const Answer number = ask(drive, drive_request::kDeviceNumber, drive_request::device_number::kSize);
    if (!number)
        return number.failure();
    device.deviceNumber = qint32(ByteView(*number).le32(drive_request::device_number::kDeviceNumber));
    return {};
}

bool isFixedDisk(const DetectedDrive &device)
{
    return device.mediaType == drive_request::geometry::kFixedMedia;
}

std::optional<StorageDescriptor> describe(Drive &drive, DetectedDrive &device)
{
    std::optional<StorageDescriptor> descriptor = storage_descriptor::query(drive);
    if (descriptor) {
        device.model = descriptor->model();
        device.firmware = QString::fromLatin1(descriptor->revision.trimmed());
        device.serial = QString::fromLatin1(descriptor->serial);
        device.descriptorSerial = device.serial;
    }
    readSmartVersion(drive, device);
    return descriptor;
}

void identify(Drive &drive, const std::optional<StorageDescriptor> &descriptor, DetectedDrive &device)
{
    const Identification identification = readIdentity(drive, device.probeNumber, descriptor);
    device.accessMethod = identification.method;
    if (identification.method != AccessMethod::None)
        applyIdentify(ByteView(identification.sector), device);
    qCDebug(lcDisk) << device.path << "is" << device.model << "by access method" << int(device.accessMethod);
}

bool isSameDrive(const DetectedDrive &known, const DetectedDrive &found)
{
    if (known.capacity != found.capacity || differ(known.model, found.model))
        return false;
    if (!known.descriptorSerial.isEmpty() && !found.descriptorSerial.isEmpty())
        return known.descriptorSerial == found.descriptorSerial;
    return known.accessMethod != found.accessMethod || !differ(known.serial, found.serial);
}

} // namespace detection
