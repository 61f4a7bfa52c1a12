// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/fault_log.h"
#include "disk/volume_entry.h"
#include "disk/workers.h"
#include "platform/volumes.h"

#include <QDeadlineTimer>

#include <functional>
#include <memory>

/// Reads the machine's fixed volumes: their list, then each volume on a thread of its own, so that a volume
/// on a drive that hangs delays the others by one time limit at most. Event loop's thread only.
class VolumeReader
{
public:
    /// `volumes` outlives every thread of `workers`, and this object outlives the event loop's last turn.
    VolumeReader(VolumeSystem &volumes, Workers &workers);

    /// Passes the volumes in the system's order, in a later turn of the event loop. A volume that does not
    /// answer in time, or the whole list, is passed as it was read the last time.
    void read(std::function<void(const VolumeList &)> done);

private:
    struct Reading;

    void readEach(const std::shared_ptr<Reading> &reading, QDeadlineTimer deadline);
    void finish(Reading &reading);
    [[nodiscard]] VolumeEntry lastReadOf(const VolumeEntry &listed) const;

    VolumeSystem &m_volumes;
    Workers &m_workers;
    FaultLog m_faults;
    VolumeList m_last;
};
