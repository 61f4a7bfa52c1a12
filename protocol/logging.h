// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLoggingCategory>

/// "halvex.protocol". Messages name peers, but never contain what they sent: it may hold passwords.
Q_DECLARE_LOGGING_CATEGORY(lcProtocol)
