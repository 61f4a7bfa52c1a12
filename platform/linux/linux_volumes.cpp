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

/// Returns the mount point of a volume name, with or without its final slash.
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

/// Returns the first eight hex digits of a UUID as a number, which for FAT and NTFS is the serial number.
quint32 serialFrom(QString uuid)
{
    bool isNumber = false;
    const quint32 serial = uuid.remove(QLatin1Char('-')).left(8).toUInt(&isNumber, 16);
    return isNumber ? serial : 0;
}

} // namespace

QStringList LinuxVolumes::volumeNames()
{
    m_numbers->rescan();
    QFile table(QStringLiteral("/proc/self/mountinfo"));
    const QVector<Mount> mounts =
        table.open(QIODevice::ReadOnly) ? parseMountTable(table.readAll()) : QVector<Mount>();
    {
        const QMutexLocker lock(&m_mutex);
        m_mounts = mounts;
    }
    QStringList names;
    for (const Mount &mount : mounts)
        names << (mount.mountPoint.endsWith(QLatin1Char('/')) ? mount.mountPoint
                                                              : mount.mountPoint + QLatin1Char('/'));
    return names;
}

std::optional<Mount> LinuxVolumes::find(const QString &mountPoint) const
{
    const QMutexLocker lock(&m_mutex);
    for (const Mount &mount : m_mounts) {
        if (mount.mountPoint == mountPoint)
            return mount;
    }
    return std::nullopt;
}

quint32 LinuxVolumes::driveType(const QString &volumeOrLetter)
{
    const std::optional<Mount> mount = find(mountPointOf(volumeOrLetter));
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
    const std::optional<Mount> mount = find(mountPointOf(volumeName));
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
    const std::optional<Mount> mount = find(mountPointOf(devicePath));
    const std::optional<dev_t> device = mount ? deviceOf(*mount) : std::nullopt;
    return device ? m_numbers->numberOf(*device) : std::nullopt;
}
