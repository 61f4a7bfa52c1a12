// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"
#include "platform/linux/disk_numbers.h"

#include <memory>
#include <utility>

/// The machine's whole disks: PhysicalDriveN is the disk with number N in DiskNumbers. Geometry, length,
/// number and descriptor come from the kernel and udev; ATA commands go through SG_IO, which needs
/// CAP_SYS_RAWIO. Opening a drive, and any request but an ATA command, leaves a sleeping drive asleep.
class LinuxDrives : public DriveSystem
{
public:
    explicit LinuxDrives(std::shared_ptr<DiskNumbers> numbers)
        : m_numbers(std::move(numbers))
    {}

    void rescan() override;
    OpenReply open(const QString &path) override;

private:
    const std::shared_ptr<DiskNumbers> m_numbers;
};
