// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_drives.h"

#include "platform/drive_requests.h"
#include "platform/linux/block_devices.h"
#include "platform/linux/file_descriptor.h"
#include "platform/linux/linux_error.h"
#include "platform/linux/logging.h"
#include "platform/linux/sg_io.h"

#include <QFile>

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {

using namespace drive_request;

constexpr ControlReply failed(quint32 error)
{
    return {error, 0};
}

class LinuxDrive : public Drive
{
public:
    LinuxDrive(FileDescriptor descriptor, int number, BlockDisk disk)
        : m_descriptor(std::move(descriptor))
        , m_number(number)
        , m_disk(std::move(disk))
    {}

    ControlReply control(quint32 code, ByteView input, MutableBytes output) override;
    ReadReply readAt(quint64 offset, MutableBytes buffer) override;

    /// SG_IO cannot be interrupted; only later requests are refused.
    void cancel() override { m_isCancelled = true; }

private:
    [[nodiscard]] std::optional<quint64> lengthInBytes() const;
    ControlReply geometry(MutableBytes output) const;
    ControlReply partition(MutableBytes output) const;
    ControlReply deviceNumber(MutableBytes output) const;
    ControlReply descriptor(ByteView input, MutableBytes output) const;

    const FileDescriptor m_descriptor;
    const int m_number;
    const BlockDisk m_disk;
    std::atomic<bool> m_isCancelled{false};
};

ControlReply LinuxDrive::control(quint32 code, ByteView input, MutableBytes output)
{
    if (m_isCancelled)
        return failed(system_error::kOperationAborted);
    switch (code) {
    case kDriveGeometry:
        return geometry(output);
    case kPartitionInfo:
        return partition(output);
    case kDeviceNumber:
        return deviceNumber(output);
    case kQueryProperty:
        return descriptor(input, output);
    case kAtaPassThrough:
        return sg_io::ataPassThrough(m_descriptor.get(), m_disk.node, input, output);
    case kSmartVersion:
    case kSmartSendCommand:
    case kSmartReceiveData:
    case kIdePassThrough:
    case kPredictFailure:
        return failed(system_error::kNotSupported);
    default:
        return failed(system_error::kInvalidFunction);
    }
}

std::optional<quint64> LinuxDrive::lengthInBytes() const
{
    quint64 length = 0;
    if (::ioctl(m_descriptor.get(), BLKGETSIZE64, &length) != 0)
        return std::nullopt;
    return length;
}

/// Computes the cylinders from the length, because those of HDIO_GETGEO stop at 16 bits.
ControlReply LinuxDrive::geometry(MutableBytes output) const
{
    constexpr quint32 kTracks = 255;
    constexpr quint32 kSectors = 63;
    if (output.size() < geometry::kSize)
        return failed(system_error::kInsufficientBuffer);
    const std::optional<quint64> length = lengthInBytes();
    int sectorSize = 0;
    if (!length || ::ioctl(m_descriptor.get(), BLKSSZGET, &sectorSize) != 0)
        return failed(systemErrorOf(errno));
    output.setLe64(geometry::kCylinders, *length / (quint64(kTracks) * kSectors * quint64(sectorSize)));
    output.setLe32(geometry::kMediaType,
                   m_disk.isRemovable ? geometry::kRemovableMedia : geometry::kFixedMedia);
    output.setLe32(geometry::kTracksPerCylinder, kTracks);
    output.setLe32(geometry::kSectorsPerTrack, kSectors);
    output.setLe32(geometry::kBytesPerSector, quint32(sectorSize));
    return {system_error::kNone, geometry::kSize};
}

ControlReply LinuxDrive::partition(MutableBytes output) const
{
    if (output.size() < partition::kSize)
        return failed(system_error::kInsufficientBuffer);
    const std::optional<quint64> length = lengthInBytes();
    if (!length)
        return failed(systemErrorOf(errno));
    output.copyIn(0, ByteView(QByteArray(partition::kSize, '\0')));
    output.setLe64(partition::kLength, *length);
    return {system_error::kNone, partition::kSize};
}

ControlReply LinuxDrive::deviceNumber(MutableBytes output) const
{
    if (output.size() < device_number::kSize)
        return failed(system_error::kInsufficientBuffer);
    output.setLe32(device_number::kDeviceType, device_number::kDiskDeviceType);
    output.setLe32(device_number::kDeviceNumber, quint32(m_number));
    output.setLe32(device_number::kPartitionNumber, 0);
    return {system_error::kNone, device_number::kSize};
}

ControlReply LinuxDrive::descriptor(ByteView input, MutableBytes output) const
{
    if (input.size() < descriptor::kQuerySize)
        return failed(system_error::kInvalidParameter);
    QByteArray answer(descriptor::kHeaderSize, '\0');
    const auto put = [&answer](int offsetField, const QString &text) {
        if (text.isEmpty())
            return;
        const int place = answer.size();
        answer += text.toUtf8() + '\0';
        MutableBytes(answer).setLe32(offsetField, quint32(place));
    };
    put(descriptor::kVendorIdOffset, m_disk.vendor);
    put(descriptor::kProductIdOffset, m_disk.product);
    put(descriptor::kProductRevisionOffset, m_disk.revision);
    put(descriptor::kSerialNumberOffset, m_disk.serial);
    const MutableBytes header(answer);
    header.setLe32(descriptor::kVersion, descriptor::kHeaderSize);
    header.setLe32(descriptor::kDescriptorSize, quint32(answer.size()));
    header.setLe32(descriptor::kBusType, descriptor::kBusTypeAta);
    const int length = std::min(answer.size(), output.size());
    output.copyIn(0, ByteView(answer).mid(0, length));
    return {system_error::kNone, quint32(length)};
}

ReadReply LinuxDrive::readAt(quint64 offset, MutableBytes buffer)
{
    if (m_isCancelled)
        return {system_error::kOperationAborted, 0};
    ssize_t length = 0;
    do {
        length = ::pread(m_descriptor.get(), buffer.data(), std::size_t(buffer.size()), off_t(offset));
    } while (length < 0 && errno == EINTR);
    if (length < 0)
        return {systemErrorOf(errno), 0};
    return {system_error::kNone, int(length)};
}

/// O_DIRECT so that a scan reads the drive and not the cache; read-only because closing a device that was
/// open for writing makes udev probe it again.
FileDescriptor openNode(const QString &node)
{
    return FileDescriptor(
        ::open(QFile::encodeName(node).constData(), O_RDONLY | O_DIRECT | O_NONBLOCK | O_CLOEXEC));
}

/// Returns whether the opened device is the disk that it is taken for: the kernel reuses nodes.
bool isDisk(const FileDescriptor &descriptor, const BlockDisk &disk)
{
    struct stat status
    {
    };
    if (::fstat(descriptor.get(), &status) != 0)
        return false;
    const std::optional<BlockDisk> found = BlockDevices::wholeDisk(status.st_rdev);
    return found && found->identity == disk.identity;
}

} // namespace

void LinuxDrives::rescan()
{
    m_numbers->rescan();
}

OpenReply LinuxDrives::open(const QString &path)
{
    const int number = physicalDriveNumber(path);
    const std::optional<BlockDisk> disk = m_numbers->disk(number);
    if (!disk)
        return {nullptr, system_error::kFileNotFound};
    FileDescriptor descriptor = openNode(disk->node);
    if (!descriptor.isOpen()) {
        const int error = errno;
        qCInfo(lcPlatform, "%s cannot be opened: %s%s", qPrintable(disk->node), strerror(error),
               error == EACCES || error == EPERM
                   ? " (the service needs root, or the node's group and CAP_SYS_RAWIO)"
                   : "");
        return {nullptr, systemErrorOf(error)};
    }
    if (!isDisk(descriptor, *disk)) {
        qCInfo(lcPlatform, "%s is not drive %d any more", qPrintable(disk->node), number);
        return {nullptr, system_error::kDeviceNotConnected};
    }
    return {std::make_unique<LinuxDrive>(std::move(descriptor), number, *disk), system_error::kNone};
}
