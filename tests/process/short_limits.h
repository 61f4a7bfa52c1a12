// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <chrono>

/// The limit of a drive in the program with short limits; enough for 99 drives on a busy machine.
inline constexpr std::chrono::milliseconds kShortRequestLimit{6000};
