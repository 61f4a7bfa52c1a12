// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

#include <chrono>

/// Returns a poll interval, stored in milliseconds, as a timer takes it: 1 s for one below 1 ms, which would
/// make the event loop spin, and at most 2^31 - 1 ms.
[[nodiscard]] std::chrono::milliseconds timerInterval(qint64 stored);
