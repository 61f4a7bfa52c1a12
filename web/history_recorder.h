// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/history_store.h"
#include "web/snapshot.h"

#include <QObject>
#include <QThread>

#include <atomic>

namespace web {

/// Writes what polls find into the history store, on a thread of its own: a disk may be slow or full, and the
/// event loop does not wait for it. A failed write is tried again with the next poll.
class HistoryRecorder : public QObject
{
    Q_OBJECT
public:
    HistoryRecorder(HistoryStore &store, int retentionDays, QObject *parent = nullptr);
    /// Waits for the writes that are queued, within a limit.
    ~HistoryRecorder() override;

    /// Queues the comparison of two states of a service.
    void record(std::shared_ptr<const ServiceSnapshot> before, std::shared_ptr<const ServiceSnapshot> after);

private:
    class Worker;

    QThread m_thread;
    std::unique_ptr<Worker> m_worker;
    std::atomic<int> m_queued{0};
};

} // namespace web
