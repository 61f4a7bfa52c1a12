// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/refresh_queue.h"

#include <utility>

RefreshQueue::RefreshQueue(std::function<void(int number)> start)
    : m_start(std::move(start))
{}

void RefreshQueue::add(Completion finished)
{
    m_waiting.push_back(std::move(finished));
    startNext();
}

void RefreshQueue::end(int number)
{
    const auto refresh = m_running.find(number);
    if (refresh == m_running.end())
        return;
    const std::vector<Completion> completions = std::move(refresh->second);
    m_running.erase(refresh);
    for (const Completion &finished : completions)
        finished();
    startNext();
}

void RefreshQueue::endAll()
{
    std::vector<Completion> completions = std::exchange(m_waiting, {});
    for (auto &[number, refresh] : std::exchange(m_running, {}))
        completions.insert(completions.end(), refresh.begin(), refresh.end());
    for (const Completion &finished : completions)
        finished();
}

void RefreshQueue::startNext()
{
    if (m_waiting.empty() || m_running.size() >= kMaxRunning)
        return;
    const int number = ++m_lastNumber;
    m_running[number] = std::exchange(m_waiting, {});
    m_start(number);
}
