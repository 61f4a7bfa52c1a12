// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/linux/disk_numbers.h"
#include "platform/linux/mount_table.h"
#include "platform/volumes.h"

#include <QMutex>

#include <memory>
#include <utility>

/// The mounted block file systems as volumes: a volume's name is its mount point and a slash. Network file
/// systems and those of the kernel have no device and do not appear; removable media are reported as such.
class LinuxVolumes : public VolumeSystem
{
public:
    explicit LinuxVolumes(std::shared_ptr<DiskNumbers> numbers)
        : m_numbers(std::move(numbers))
    {}

    QStringList volumeNames() override;
    quint32 driveType(const QString &volumeOrLetter) override;
    std::optional<VolumeSpace> space(const QString &volumeName) override;
    std::optional<VolumeInformation> information(const QString &volumeName) override;
    std::optional<qint32> deviceNumber(const QString &devicePath) override;

    /// There are no drive letters here.
    quint32 logicalDrives() override { return 0; }
    std::optional<QString> volumeNameAt(const QString & /*letterRoot*/) override { return std::nullopt; }

private:
    [[nodiscard]] std::optional<Mount> find(const QString &mountPoint) const;

    const std::shared_ptr<DiskNumbers> m_numbers;
    mutable QMutex m_mutex;
    QVector<Mount> m_mounts; ///< of the latest enumeration; guarded by m_mutex
};
