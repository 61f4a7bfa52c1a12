// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "files.h"

#include <QRegularExpression>
#include <QString>

/// Returns the number of a field of Linux' /proc/PID/status, such as VmRSS (KiB) or Threads; 0 if there is
/// none.
inline double procStatus(qint64 processId, const char *field)
{
    const QByteArray status = contentOf(QString("/proc/%1/status").arg(processId));
    const QRegularExpression expression(QLatin1String(field) + ":\\s+(\\d+)");
    return expression.match(QString::fromLatin1(status)).captured(1).toDouble();
}
