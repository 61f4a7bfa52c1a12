// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/smart_timer.h"
#include "disk/worker.h"

#include <QObject>

#include <chrono>
#include <functional>
#include <map>
#include <memory>

/// The end of a worker's work.
enum class WorkEnd {
    Done,
    TimedOut, ///< the limit is over; the worker was cancelled
    Hung,     ///< not started: an earlier worker of the subject is past its limit and still running
};

/// Time limits of the work on drives and volumes.
struct WorkLimits
{
    std::chrono::milliseconds request{20000}; ///< all requests of one read, probe, count or volume together
    std::chrono::milliseconds scanBlock{
        300000};                            ///< one block of a scan: drives retry a bad sector for minutes
    std::chrono::milliseconds stop{2000};   ///< for the block in progress when everything stops
    std::chrono::milliseconds cancel{3000}; ///< then, for cancelled requests to return
};

/// Owns the threads that work on drives and volumes. The workers of one subject run one after another, unless
/// they run beside others. A worker that passes its limit is cancelled and kept until its thread ends by
/// itself; until then its subject counts as hung and gets no other worker. Event loop's thread only; never
/// blocks, except in stopAll().
class Workers : public QObject
{
    Q_OBJECT

public:
    using Milliseconds = std::chrono::milliseconds;
    using Ended = std::function<void(int work, WorkEnd end)>;

    explicit Workers(WorkLimits limits = {}, QObject *parent = nullptr);

    /// Calls stopAll(). Threads that still run are abandoned: they use the drives until the process ends.
    ~Workers() override;

    [[nodiscard]] const WorkLimits &limits() const { return m_limits; }

    /// Queues `worker` until no earlier worker of its subject runs. The limit begins now, and ends waiting
    /// work too. `ended` is called once, in a later turn of the event loop, unless the work is abandoned; the
    /// worker exists until it returns. Returns the work's number.
    int start(std::unique_ptr<Worker> worker, Milliseconds limit, Ended ended);

    /// Restarts the limit of work.
    void setLimit(int work, Milliseconds limit);

    void stopLimit(int work);

    /// Asks the worker to stop and forgets `ended`.
    void abandon(int work);

    /// Returns whether a worker of this subject is past its limit and still running.
    [[nodiscard]] bool isHung(const QString &subject) const;

    /// Returns whether the work has not started yet.
    [[nodiscard]] bool isWaiting(int work) const;

    /// Returns whether any thread still runs.
    [[nodiscard]] bool isBusy() const { return !m_work.empty(); }

    /// Abandons all work and waits for it, limits().stop and then limits().cancel. Returns false if a thread
    /// does not end: the process must then leave without destroying the drives.
    bool stopAll();

private:
    enum class State { Waiting, Refused, Running, Late }; ///< Refused: ends without having run

    struct Work
    {
        std::unique_ptr<Worker> worker;
        Ended ended; ///< empty after the call, or when abandoned
        State state = State::Waiting;
        std::unique_ptr<SMART_timer> timer;
    };

    [[nodiscard]] bool mustWait(int number) const;
    void begin(int number);
    void cancelOverdue(int number);
    void refuse(int number);
    void removeLater(int number);
    void end(int number, WorkEnd how);
    void remove(int number);
    bool waitForAll(Milliseconds limit) const;

    const WorkLimits m_limits;
    std::map<int, Work> m_work; ///< by number, in the order of their start
    int m_lastNumber = 0;
};
