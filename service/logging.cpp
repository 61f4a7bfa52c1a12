// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/logging.h"

Q_LOGGING_CATEGORY(lcService, "halvex.service", QtWarningMsg)
