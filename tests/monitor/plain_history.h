// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QString>

/// The temperature history computed record by record through QDateTime: the reference for the real one.
namespace plain {

/// Returns a moment that orders like the date and time; one without a date comes first.
inline QDateTime moment(const QDate &date, const QTime &time)
{
    return date.isValid() ? QDateTime(date, time, Qt::UTC)
                          : QDateTime(QDate(1900, 1, 1), QTime(0, 0), Qt::UTC);
}

inline QDateTime moment(const QString &digits)
{
    constexpr int kNoNumber = -1; // is in no valid date or time
    const auto pair = [&digits](int index) {
        bool isNumber = false;
        const int number = digits.mid(2 * index, 2).toInt(&isNumber);
        return isNumber ? number : kNoNumber;
    };
    const bool hasYear = pair(0) != kNoNumber;
    return moment(hasYear ? QDate(2000 + pair(0), pair(1), pair(2)) : QDate(),
                  QTime(pair(3), pair(4), pair(5)));
}

inline QString temperatureHistory(const QByteArray &file, const QString &from, const QString &to)
{
    const QDateTime first = moment(from);
    const QDateTime last = moment(to);
    QString history;
    for (int offset = 0; offset + 8 <= file.size(); offset += 8) {
        const QString text = QString::fromUtf8(file.constData() + offset, 8);
        const auto part = [&text](int i) { return (i < text.size() ? text.at(i).unicode() : 0) - 33; };
        const QDateTime its =
            moment(QDate(2000 + part(0), part(1), part(2)), QTime(part(3), part(4), part(5)));
        if (!(its < first))
            history += text;
        if (last < its)
            break;
    }
    return history;
}

} // namespace plain
