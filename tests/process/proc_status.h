// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QFile>
#include <QRegularExpression>
#include <QString>

/// Returns the field of Linux' /proc/PID/status in KiB, such as VmRSS; 0 if there is none.
inline double procStatusKiB(qint64 processId, const char *field)
{
    QFile status(QString("/proc/%1/status").arg(processId));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QRegularExpression expression(QLatin1String(field) + ":\\s+(\\d+) kB");
    return expression.match(QString::fromLatin1(status.readAll())).captured(1).toDouble();
}
