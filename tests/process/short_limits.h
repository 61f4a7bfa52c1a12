// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <chrono>

/// How long a drive has to answer in the program with short limits; enough for 99 of them on a busy machine.
inline constexpr std::chrono::milliseconds kShortRequestLimit{6000};
