// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/snapshot.h"

#include <mutex>
#include <utility>

namespace web {

/// Passes the latest snapshot from the poller's thread to the server's threads.
class SnapshotSource
{
public:
    [[nodiscard]] std::shared_ptr<const Snapshot> get() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_snapshot;
    }

    void set(std::shared_ptr<const Snapshot> snapshot)
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_snapshot = std::move(snapshot);
    }

private:
    mutable std::mutex m_mutex;
    std::shared_ptr<const Snapshot> m_snapshot = std::make_shared<Snapshot>();
};

} // namespace web
