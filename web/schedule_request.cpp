// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/schedule_request.h"

#include <QStringList>

namespace web {

namespace {

using client::ScheduleEntry;
using client::ScheduleKind;

QTime parseClock(const QString &text)
{
    const QTime time = QTime::fromString(text, QStringLiteral("HH:mm:ss"));
    return time.isValid() ? time : QTime::fromString(text, QStringLiteral("HH:mm"));
}

std::optional<ScheduleKind> kindOf(const QString &word)
{
    static const QStringList kWords{QStringLiteral("none"), QStringLiteral("once"), QStringLiteral("daily"),
                                    QStringLiteral("weekly")};
    const int index = int(kWords.indexOf(word));
    return index < 0 ? std::nullopt : std::optional<ScheduleKind>(ScheduleKind(index));
}

} // namespace

Result<ScheduleEntry> scheduleEntry(qint32 drive, const QString &kind, const QString &date,
                                    const QString &time, const QString &weekday)
{
    static const QStringList kWeekdays{QStringLiteral("monday"),    QStringLiteral("tuesday"),
                                       QStringLiteral("wednesday"), QStringLiteral("thursday"),
                                       QStringLiteral("friday"),    QStringLiteral("saturday"),
                                       QStringLiteral("sunday")};
    const auto kindValue = kindOf(kind);
    if (!kindValue)
        return Error{QStringLiteral("must be none, once, daily or weekly")};
    // The request holds a date and a time of every kind.
    ScheduleEntry entry{drive, *kindValue, 0, QDate(2000, 1, 1), QTime(0, 0)};
    if (entry.kind == ScheduleKind::None)
        return entry;
    entry.time = parseClock(time);
    if (!entry.time.isValid())
        return Error{QStringLiteral("%1 needs a \"time\" such as 03:30").arg(kind)};
    if (entry.kind == ScheduleKind::Once) {
        entry.date = QDate::fromString(date, Qt::ISODate);
        if (!entry.date.isValid() || entry.date.year() < 2000 || entry.date.year() > 2099)
            return Error{QStringLiteral("once needs a \"date\" such as 2026-11-15")};
    }
    if (entry.kind == ScheduleKind::Weekly) {
        entry.weekday = qint32(kWeekdays.indexOf(weekday.toLower()));
        if (entry.weekday < 0)
            return Error{QStringLiteral("weekly needs a \"weekday\" such as sunday")};
    }
    return entry;
}

} // namespace web
