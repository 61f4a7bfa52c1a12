// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/logging.h"

Q_LOGGING_CATEGORY(lcDisk, "halvex.disk", QtWarningMsg)
