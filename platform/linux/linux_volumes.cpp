// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_volumes.h"

#include "platform/linux/block_devices.h"

#include <QFile>

#include <sys/stat.h>
#include <sys/statvfs.h>

namespace {

constexpr quint32 kUnknownDrive = 0;   // DRIVE_UNKNOWN
constexpr quint32 kRemovableDrive = 2; // DRIVE_REMOVABLE
constexpr quint32 kOpticalDrive = 5;   // DRIVE_CDROM

/// The mount point that a volume name, or the name less its last character, stands for.
QString mountPointOf(QString name)
{
    if (name.endsWith(QLatin1Char('/')))
        name.chop(1);
    return name.isEmpty() ? QStringLiteral("/") : name;
}

std::optional<dev_t> deviceOf(const Mount &mount)
{
    struct stat status
    {
    };
    if (::stat(QFile::encodeName(mount.source).constData(), &status) != 0 || !S_ISBLK(status.st_mode))
        return std::nullopt;
    return status.st_rdev;
}

/// A file system's serial as eight hex digits: what FAT and NTFS call so, and the head of any UUID.
quint32 serialFrom(QString uuid)
{
    bool isNumber = false;
    const quint32 serial = uuid.remove(QLatin1Char('-')).left(8).toUInt(&isNumber, 16);
    return isNumber ? serial : 0;
}

} // namespace

QStringList LinuxVolumes::volumeNames()
{
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    m_mounts = table.open(QIODevice::ReadOnly) ? parseMountTable(table.readAll()) : QVector<Mount>();
    QStringList names;
    for (const Mount &mount : qAsConst(m_mounts))
        names << (mount.mountPoint.endsWith(QLatin1Char('/')) ? mount.mountPoint
                                                              : mount.mountPoint + QLatin1Char('/'));
    return names;
}

const Mount *LinuxVolumes::find(const QString &mountPoint) const
{
    for (const Mount &mount : m_mounts) {
        if (mount.mountPoint == mountPoint)
            return &mount;
    }
    return nullptr;
}

quint32 LinuxVolumes::driveType(const QString &volumeOrLetter)
{
    const Mount *mount = find(mountPointOf(volumeOrLetter));
    const std::optional<dev_t> device = mount ? deviceOf(*mount) : std::nullopt;
    if (!device)
        return kUnknownDrive;
    if (mount->fileSystem == QLatin1String("iso9660") || mount->fileSystem == QLatin1String("udf"))
        return kOpticalDrive;
    return BlockDevices::isRemovable(*device) ? kRemovableDrive : kFixedDrive;
}

std::optional<VolumeSpace> LinuxVolumes::space(const QString &volumeName)
{
    struct statvfs status
    {
    };
    if (::statvfs(QFile::encodeName(mountPointOf(volumeName)).constData(), &status) != 0)
        return std::nullopt;
    return VolumeSpace{quint64(status.f_blocks) * status.f_frsize, quint64(status.f_bfree) * status.f_frsize};
}

std::optional<VolumeInformation> LinuxVolumes::information(const QString &volumeName)
{
    const Mount *mount = find(mountPointOf(volumeName));
    if (!mount)
        return std::nullopt;
    VolumeInformation information;
    information.fileSystem = mount->fileSystem;
    if (const std::optional<dev_t> device = deviceOf(*mount)) {
        information.label = BlockDevices::property(*device, "ID_FS_LABEL_ENC");
        information.serial = serialFrom(BlockDevices::property(*device, "ID_FS_UUID"));
    }
    return information;
}

std::optional<qint32> LinuxVolumes::deviceNumber(const QString &devicePath)
{
    const Mount *mount = find(mountPointOf(devicePath));
    const std::optional<dev_t> device = mount ? deviceOf(*mount) : std::nullopt;
    const std::optional<BlockDisk> disk = device ? BlockDevices::diskOf(*device) : std::nullopt;
    return disk ? std::optional<qint32>(m_numbers->numberOf(disk->node)) : std::nullopt;
}
