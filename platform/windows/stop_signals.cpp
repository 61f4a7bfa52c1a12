// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/stop_signals.h"

#include <QWinEventNotifier>

#include <utility>
#include <windows.h>

namespace {

/// Set for every caught request. The system passes no context to its callback.
HANDLE stopRequested = nullptr;

// Called on a thread of the system.
BOOL WINAPI catchStopRequest(DWORD request)
{
    switch (request) {
    case CTRL_C_EVENT:
    case CTRL_BREAK_EVENT:
        SetEvent(stopRequested);
        return TRUE;
    case CTRL_CLOSE_EVENT:
        SetEvent(stopRequested);
        Sleep(INFINITE); // the system ends the process when this returns; the process ends by itself soon
        return TRUE;
    case CTRL_LOGOFF_EVENT:
        return TRUE; // a log-off does not concern a service
    default:
        return FALSE;
    }
}

class StopWatcher : public QObject
{
public:
    explicit StopWatcher(std::function<void()> requested)
        : m_requested(std::move(requested))
        , m_notifier(stopRequested)
    {
        connect(&m_notifier, &QWinEventNotifier::activated, this, [this] { m_requested(); });
    }

private:
    std::function<void()> m_requested;
    QWinEventNotifier m_notifier;
};

} // namespace

void catchStopSignals()
{
    if (!stopRequested)
        stopRequested = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    if (stopRequested)
        SetConsoleCtrlHandler(catchStopRequest, TRUE);
}

std::unique_ptr<QObject> watchStopSignals(std::function<void()> requested)
{
    return std::make_unique<StopWatcher>(std::move(requested));
}
