// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLoggingCategory>

/// What rating, alerts, mail and the temperature log have to tell; below warnings only when asked for.
Q_DECLARE_LOGGING_CATEGORY(lcMonitor)
