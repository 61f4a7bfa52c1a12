// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLoggingCategory>

/// Logs rating, alerts, mail and the temperature log; by default from warnings on.
Q_DECLARE_LOGGING_CATEGORY(lcMonitor)
