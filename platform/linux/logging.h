// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLoggingCategory>

/// Logs the reason of a drive's failure as information: the service continues without the drive.
Q_DECLARE_LOGGING_CATEGORY(lcPlatform)
