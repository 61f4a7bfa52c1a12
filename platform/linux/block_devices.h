// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QVector>

#include <sys/types.h>

#include <optional>

/// A whole disk as udev and the kernel describe it.
struct BlockDisk
{
    QString node; ///< "/dev/sda"
    dev_t device = 0;
    /// The drive's world wide name, or its model and serial number; empty if neither is known.
    QString identity;
    bool isRemovable = false;
    QString vendor;
    QString product;
    QString revision;
    QString serial;
};

/// The machine's block devices. Any thread may call; each call asks udev afresh, and wakes no drive.
class BlockDevices
{
public:
    /// Returns the whole disks that hardware backs (no loop, RAM, optical or mapped devices), in the order of
    /// their names, the shorter first: sdb comes before sdaa.
    [[nodiscard]] static QVector<BlockDisk> wholeDisks();

    /// Returns the whole disk that has a device number; nullopt if there is none.
    [[nodiscard]] static std::optional<BlockDisk> wholeDisk(dev_t device);

    /// Returns the place in `disks` of the one that holds a block device, the first if it lies on several;
    /// -1 if it lies on none of them.
    [[nodiscard]] static int diskBelow(dev_t device, const QVector<dev_t> &disks);

    /// Returns a property that udev keeps of a block device ("ID_FS_LABEL"); empty if it is not set.
    [[nodiscard]] static QString property(dev_t device, const char *name);

    [[nodiscard]] static bool isRemovable(dev_t device);
};
