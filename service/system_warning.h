// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QtDebug>

/// A warning on the framework's warning output with the system's words for the error appended.
inline void systemWarning(const char *message, const QString &systemErrorText)
{
    qWarning("%s (%s)", message, qUtf8Printable(systemErrorText));
}
