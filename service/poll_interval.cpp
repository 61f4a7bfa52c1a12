// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/poll_interval.h"

#include <algorithm>
#include <limits>

std::chrono::milliseconds timerInterval(qint64 stored)
{
    using std::chrono::milliseconds;
    constexpr milliseconds kTooShort{1000};
    constexpr qint64 kLongest = std::numeric_limits<qint32>::max();
    return stored < 1 ? kTooShort : milliseconds(std::min(stored, kLongest));
}
