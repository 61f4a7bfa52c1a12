// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/logging.h"

Q_LOGGING_CATEGORY(lcMonitor, "halvex.monitor", QtWarningMsg)
