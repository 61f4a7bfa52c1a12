// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/linux/block_devices.h"

#include <QMutex>
#include <QStringList>

#include <optional>

/// The numbers of the machine's disks: their places in BlockDevices::wholeDisks() at first, and theirs for
/// good while this object lives. A disk that is pulled leaves a gap, so that no other is ever taken for it;
/// one that comes gets the next number, or the one that its node had before. Any thread may call.
class DiskNumbers
{
public:
    /// The disk that has `number` now.
    [[nodiscard]] std::optional<BlockDisk> disk(int number);

    /// The number of the disk at a node ("/dev/sda").
    [[nodiscard]] int numberOf(const QString &node);

private:
    QMutex m_mutex;      // guards m_nodes
    QStringList m_nodes; // a node's place is its disk's number
};
