// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/logging.h"

Q_LOGGING_CATEGORY(lcWeb, "halvex.web", QtInfoMsg)
