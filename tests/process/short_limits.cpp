// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/short_limits.h"

#include "service/work_limits.h"

WorkLimits workLimits()
{
    using std::chrono::milliseconds;
    return {kShortRequestLimit, kShortRequestLimit, milliseconds(300), milliseconds(700)};
}
