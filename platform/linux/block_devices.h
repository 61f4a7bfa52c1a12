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
    bool isRemovable = false;
    QString vendor;
    QString product;
    QString revision;
    QString serial;
};

/// The machine's block devices. Any thread may call; each call asks udev afresh.
class BlockDevices
{
public:
    /// The whole disks that a drive stands behind (no loop, RAM, optical or mapped devices), in the order of
    /// their names, the shorter first: sdb comes before sdaa.
    [[nodiscard]] static QVector<BlockDisk> wholeDisks();

    /// The disk that holds a block device; the first one when it lies on several. nullopt when it lies on
    /// none of wholeDisks().
    [[nodiscard]] static std::optional<BlockDisk> diskOf(dev_t device);

    /// A property udev keeps of a block device ("ID_FS_LABEL"); empty when it has none.
    [[nodiscard]] static QString property(dev_t device, const char *name);

    [[nodiscard]] static bool isRemovable(dev_t device);
};
