// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <functional>
#include <map>
#include <vector>

/// The refreshes that consoles have requested. Each starts at once, so that it reads what is true after its
/// request; only when kMaxRunning are running do further ones wait and then share one.
class RefreshQueue
{
public:
    using Completion = std::function<void()>;
    static constexpr std::size_t kMaxRunning = 8;

    /// `start` starts a refresh whose end is reported by end() with the same number.
    explicit RefreshQueue(std::function<void(int number)> start);

    void add(Completion finished);

    /// Calls the completions of one refresh. Does nothing for one that has ended.
    void end(int number);

    /// Calls the completions of all refreshes.
    void endAll();

private:
    void startNext();

    const std::function<void(int number)> m_start;
    std::map<int, std::vector<Completion>> m_running;
    std::vector<Completion> m_waiting;
    int m_lastNumber = 0;
};
