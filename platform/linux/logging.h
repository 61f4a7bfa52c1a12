// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLoggingCategory>

/// Why a drive does not answer, as information: the service goes on without it.
Q_DECLARE_LOGGING_CATEGORY(lcPlatform)
