// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/work_limits.h"

WorkLimits workLimits()
{
    return {};
}
