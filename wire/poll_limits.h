// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// Limits of the poll intervals that the service accepts from its key.
inline constexpr quint32 kShortestPollSeconds = 1;
inline constexpr quint32 kLongestPollSeconds = 360000;
