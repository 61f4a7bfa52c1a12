// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDate>
#include <QString>
#include <QTime>

/// The format of moments for QDateTime::toString(): twelve digits, the year as its last two.
inline const QString kDateTimeFormat = QStringLiteral("yyMMddhhmmss");

/// A date and a time of day of which one may be invalid without the other.
struct DateAndTime
{
    QDate date;
    QTime time;
};

/// Parses "yyMMddhhmmss" in the years 2000 to 2099. A pair that is missing or is not a number leaves its date
/// or its time of day invalid.
[[nodiscard]] DateAndTime parseDateTime(const QString &text);
