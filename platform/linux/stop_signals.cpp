// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/stop_signals.h"

#include "platform/linux/file_descriptor.h"

#include <QSocketNotifier>

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>
#include <utility>

namespace {

sigset_t stopSignals()
{
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGTERM);
    sigaddset(&signals, SIGINT);
    return signals;
}

class StopWatcher : public QObject
{
public:
    explicit StopWatcher(std::function<void()> requested)
        : m_requested(std::move(requested))
    {
        const sigset_t signals = stopSignals();
        m_queue = FileDescriptor(signalfd(-1, &signals, SFD_NONBLOCK | SFD_CLOEXEC));
        if (!m_queue.isOpen())
            return;
        m_notifier = std::make_unique<QSocketNotifier>(m_queue.get(), QSocketNotifier::Read);
        connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] { takeSignals(); });
    }

private:
    void takeSignals()
    {
        signalfd_siginfo taken;
        while (::read(m_queue.get(), &taken, sizeof(taken)) == ssize_t(sizeof(taken)))
            m_requested();
    }

    std::function<void()> m_requested;
    FileDescriptor m_queue;
    std::unique_ptr<QSocketNotifier> m_notifier; // after m_queue: it goes first
};

} // namespace

// Blocked signals stay pending until the signalfd reports them. Threads inherit the mask, so a signal for the
// process cannot kill any of them.
void catchStopSignals()
{
    const sigset_t signals = stopSignals();
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

std::unique_ptr<QObject> watchStopSignals(std::function<void()> requested)
{
    return std::make_unique<StopWatcher>(std::move(requested));
}
