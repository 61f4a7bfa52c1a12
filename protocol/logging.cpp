// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/logging.h"

Q_LOGGING_CATEGORY(lcProtocol, "halvex.protocol", QtWarningMsg)
