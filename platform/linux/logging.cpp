// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/logging.h"

Q_LOGGING_CATEGORY(lcPlatform, "halvex.platform", QtWarningMsg)
