// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/logging.h"

Q_LOGGING_CATEGORY(lcConfig, "halvex.config", QtWarningMsg)
