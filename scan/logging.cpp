// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/logging.h"

Q_LOGGING_CATEGORY(lcScan, "halvex.scan", QtWarningMsg)
