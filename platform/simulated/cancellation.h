// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

/// Waits that another thread can cancel permanently.
class Cancellation
{
public:
    /// Returns true after `delay`; false, at once, when cancel() has been called.
    [[nodiscard]] bool wait(std::chrono::milliseconds delay)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        if (delay.count() > 0) // a wait of zero would still suspend the thread
            m_changed.wait_for(lock, delay, [this] { return m_cancelled; });
        return !m_cancelled;
    }

    /// Returns when cancel() has been called.
    void waitForCancel()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return m_cancelled; });
    }

    void cancel()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_cancelled = true;
        m_changed.notify_all();
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    bool m_cancelled = false;
};
