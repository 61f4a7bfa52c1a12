// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QtDebug>

/// Logs a warning, followed by the system's text for the error.
inline void systemWarning(const char *message, const QString &systemErrorText)
{
    qWarning("%s (%s)", message, qUtf8Printable(systemErrorText));
}
