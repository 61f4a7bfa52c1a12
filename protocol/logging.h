// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QLoggingCategory>

/// "halvex.protocol". Peers are named; what they say is not, because it may hold passwords.
Q_DECLARE_LOGGING_CATEGORY(logProtocol)
