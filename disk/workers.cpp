// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/workers.h"

#include "disk/logging.h"

#include <QDeadlineTimer>

#include <algorithm>
#include <utility>

Workers::Workers(WorkLimits limits, QObject *parent)
    : QObject(parent)
    , m_limits(limits)
{}

Workers::~Workers()
{
    stopAll();
    for (auto &[number, work] : m_work) {
        if (work.worker->isRunning())
            Q_UNUSED(work.worker.release()); // a running QThread must not be destroyed
    }
}

int Workers::start(std::unique_ptr<Worker> worker, Milliseconds limit, Ended ended)
{
    const int number = ++m_lastNumber;
    auto timer = std::make_unique<SMART_timer>(number);
    connect(timer.get(), &SMART_timer::needTerminated, this, &Workers::cancelOverdue);
    Work &work = m_work[number];
    work = {std::move(worker), std::move(ended), State::Waiting, std::move(timer)};
    work.timer->start(limit);
    if (isHung(work.worker->subject()))
        refuse(number);
    else if (!mustWait(number))
        begin(number);
    return number;
}

void Workers::setLimit(int work, Milliseconds limit)
{
    const auto found = m_work.find(work);
    if (found != m_work.end() &&
        (found->second.state == State::Running || found->second.state == State::Waiting))
        found->second.timer->start(limit);
}

void Workers::stopLimit(int work)
{
    const auto found = m_work.find(work);
    if (found != m_work.end())
        found->second.timer->stop();
}

void Workers::abandon(int work)
{
    const auto found = m_work.find(work);
    if (found == m_work.end())
        return;
    found->second.ended = nullptr;
    if (found->second.state == State::Waiting)
        m_work.erase(found);
    else
        found->second.worker->requestStop();
}

bool Workers::isHung(const QString &subject) const
{
    return std::any_of(m_work.cbegin(), m_work.cend(), [&subject](const auto &entry) {
        return entry.second.state == State::Late && entry.second.worker->subject() == subject;
    });
}

bool Workers::isWaiting(int work) const
{
    const auto found = m_work.find(work);
    return found != m_work.end() && found->second.state == State::Waiting;
}

bool Workers::stopAll()
{
    const std::map<int, Work> &all = m_work;
    for (auto work = all.cbegin(); work != all.cend();)
        abandon((work++)->first);
    if (!waitForAll(m_limits.stop)) {
        for (const auto &[number, work] : m_work)
            work.worker->cancel();
        waitForAll(m_limits.cancel);
    }
    bool hasEnded = true;
    for (auto &[number, work] : m_work) {
        if (!work.worker->isRunning())
            continue;
        work.state = State::Late;
        hasEnded = false;
    }
    return hasEnded;
}

/// Returns whether an earlier worker of the same subject has to end first.
bool Workers::mustWait(int number) const
{
    const Worker &worker = *m_work.at(number).worker;
    if (worker.runsBeside())
        return false;
    return std::any_of(m_work.cbegin(), m_work.find(number), [&worker](const auto &entry) {
        const Worker &earlier = *entry.second.worker;
        return entry.second.state != State::Refused && !earlier.runsBeside() &&
               earlier.subject() == worker.subject();
    });
}

void Workers::begin(int number)
{
    Work &work = m_work.at(number);
    work.state = State::Running;
    connect(work.worker.get(), &Worker::workDone, this, [this, number] { end(number, WorkEnd::Done); });
    connect(work.worker.get(), &QThread::finished, this, [this, number] { remove(number); });
    work.worker->start();
}

void Workers::cancelOverdue(int number)
{
    Work &work = m_work.at(number);
    if (work.worker->hasAdvanced())
        return;
    qCDebug(lcDisk) << work.worker->subject() << "does not answer in time";
    work.timer->stop();
    const bool hasStarted = work.state == State::Running;
    work.state = hasStarted ? State::Late : State::Refused;
    end(number, WorkEnd::TimedOut); // before the cancelled work continues with failing requests
    if (!work.worker->isRunning())  // its end is on the way, it had no turn, or there was no thread for it
        removeLater(number);
    if (!hasStarted)
        return;
    work.worker->cancel();
    for (const auto &[other, candidate] : m_work) {
        if (candidate.state == State::Waiting && candidate.worker->subject() == work.worker->subject())
            refuse(other);
    }
}

/// Ends work that has not started.
void Workers::refuse(int number)
{
    Work &work = m_work.at(number);
    work.timer->stop();
    work.state = State::Refused;
    removeLater(number);
}

void Workers::removeLater(int number)
{
    QMetaObject::invokeMethod(
        this, [this, number] { remove(number); }, Qt::QueuedConnection);
}

void Workers::end(int number, WorkEnd how)
{
    if (const Ended ended = std::exchange(m_work.at(number).ended, nullptr))
        ended(number, how);
}

/// Removes work whose thread has ended or never ran, and starts the work that waited for it.
void Workers::remove(int number)
{
    const auto found = m_work.find(number);
    if (found == m_work.end())
        return;
    end(number, found->second.state == State::Running ? WorkEnd::Done : WorkEnd::Hung);
    const QString subject = found->second.worker->subject();
    m_work.erase(found);
    for (const auto &[other, candidate] : m_work) {
        if (candidate.state == State::Waiting && candidate.worker->subject() == subject && !mustWait(other)) {
            begin(other);
            return;
        }
    }
}

/// Waits for all workers except late ones, which were cancelled earlier.
bool Workers::waitForAll(Milliseconds limit) const
{
    const QDeadlineTimer deadline(limit);
    return std::all_of(m_work.cbegin(), m_work.cend(), [&deadline](const auto &entry) {
        return entry.second.state == State::Late || entry.second.worker->wait(deadline);
    });
}
