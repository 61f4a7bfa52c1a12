// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDate>
#include <QString>
#include <QTime>

/// How moments are written for QDateTime::toString(): twelve digits, the year as its last two.
inline const QString kDateTimeFormat = QStringLiteral("yyMMddhhmmss");

/// A date and a time of day of which one may be invalid without the other.
struct DateAndTime
{
    QDate date;
    QTime time;
};

/// The moment that the twelve digits "yyMMddhhmmss" write, in the years 2000 to 2099. A pair that is missing
/// or no number counts as 0, which mostly leaves the date or the time invalid.
[[nodiscard]] DateAndTime parseDateTime(const QString &text);
