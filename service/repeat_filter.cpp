// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/repeat_filter.h"

#include <algorithm>

bool RepeatFilter::admits(const QString &text, Time now)
{
    constexpr std::chrono::hours kPause(1);
    constexpr int kRemembered = 1000;
    const auto known = m_admitted.constFind(text);
    if (known != m_admitted.constEnd() && now - *known < kPause)
        return false;
    if (m_admitted.size() >= kRemembered)
        m_admitted.erase(std::min_element(m_admitted.cbegin(), m_admitted.cend()));
    m_admitted.insert(text, now);
    return true;
}
