// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/linux/block_devices.h"
#include "platform/linux/number_assignment.h"

#include <QMutex>

#include <optional>

/// The machine's whole disks under their numbers, which stay with their identity (number_assignment.h). Any
/// thread may call.
class DiskNumbers
{
public:
    /// Keeps the numbers in the file at `path`, which is written when a new disk appears. Without a path they
    /// last as long as this object. A damaged file is set aside, and the numbers start afresh.
    explicit DiskNumbers(QString path = {});

    /// Lists the machine's disks afresh.
    void rescan();

    /// Returns the disk that has `number`, as of the latest rescan().
    [[nodiscard]] std::optional<BlockDisk> disk(int number);

    /// Returns the number of the disk that holds a block device, as of the latest rescan(); nullopt if the
    /// device lies on no whole disk.
    [[nodiscard]] std::optional<int> numberOf(dev_t device);

private:
    struct NumberedDisk
    {
        int number = 0;
        BlockDisk disk;
    };

    QVector<NumberedDisk> present();
    void load();
    void setAside(const QString &reason);
    void store();

    const QString m_path;
    QMutex m_scanMutex; // held during a whole rescan; guards what follows
    QVector<number_assignment::Entry> m_entries;
    QByteArray m_stored; // what the file holds
    bool m_isLoaded = false;
    bool m_isWritable = true;

    QMutex m_mutex; // guards m_present, and is held only for a moment
    std::optional<QVector<NumberedDisk>> m_present;
};
