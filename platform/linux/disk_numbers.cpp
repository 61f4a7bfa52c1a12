// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/disk_numbers.h"

#include <QMutexLocker>

std::optional<BlockDisk> DiskNumbers::disk(int number)
{
    for (const BlockDisk &disk : BlockDevices::wholeDisks()) {
        if (numberOf(disk.node) == number)
            return disk;
    }
    return std::nullopt;
}

int DiskNumbers::numberOf(const QString &node)
{
    const QMutexLocker lock(&m_mutex);
    if (!m_nodes.contains(node))
        m_nodes.append(node);
    return int(m_nodes.indexOf(node));
}
