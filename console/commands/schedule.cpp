// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"
#include "console/context.h"

#include <algorithm>

namespace {

namespace requests = client::requests;
using client::ScheduleEntry;
using client::ScheduleKind;

/// The service looks for due scans every 20 s, within the same day. A time closer to midnight is mostly
/// missed.
const QTime kEarliest(0, 0, 20);
const QTime kLatest(23, 59, 40);

QTime clockArgument(const Context &context, const QString &text)
{
    for (const char *form : {"H:mm:ss", "H:mm"}) {
        const QTime time = QTime::fromString(text, QLatin1String(form));
        if (!time.isValid())
            continue;
        if (time < kEarliest || time > kLatest)
            context.refuse(QStringLiteral("the service can miss a scan between 23:59:41 and 00:00:19; "
                                          "choose another time"));
        return time;
    }
    context.refuse(QStringLiteral("'%1' is not a time of day, such as 03:30 or 03:30:00").arg(text));
}

QDate dateArgument(const Context &context, const QString &text)
{
    const QDate date = QDate::fromString(text, QStringLiteral("yyyy-MM-dd"));
    if (!date.isValid() || date.year() < 2000 || date.year() > 2099)
        context.refuse(QStringLiteral("'%1' is not a date, such as 2026-11-15").arg(text));
    return date;
}

/// Returns an entry with today's date, which every kind needs and only `once` uses.
ScheduleEntry entryOf(qint32 drive, ScheduleKind kind)
{
    ScheduleEntry entry;
    entry.drive = drive;
    entry.kind = kind;
    entry.date = QDate::currentDate();
    entry.time = QTime(0, 0);
    return entry;
}

/// Returns the schedule that the words after the drive number describe.
ScheduleEntry parseEntry(const Context &context, qint32 drive, const QStringList &words)
{
    const auto kind = client::scheduleKind(words.value(0)).value_or(ScheduleKind::None);
    const int expected = kind == ScheduleKind::Daily ? 2 : 3;
    if (kind == ScheduleKind::None || words.size() != expected)
        context.refuse(
            QStringLiteral("a schedule is 'once 2026-11-15 03:30', 'daily 03:30' or 'weekly sunday 03:30'"));
    ScheduleEntry entry = entryOf(drive, kind);
    entry.time = clockArgument(context, words.last());
    if (kind == ScheduleKind::Once)
        entry.date = dateArgument(context, words.at(1));
    if (kind == ScheduleKind::Weekly) {
        const auto weekday = client::weekdayNumber(words.at(1));
        if (!weekday)
            context.refuse(QStringLiteral("'%1' is not a weekday, such as sunday").arg(words.at(1)));
        entry.weekday = *weekday;
    }
    return entry;
}

bool isSame(const ScheduleEntry &a, const ScheduleEntry &b)
{
    // The service may replace the date of a kind that does not use it.
    const bool isDateSame = a.kind != ScheduleKind::Once || a.date == b.date;
    return a.drive == b.drive && a.kind == b.kind && a.weekday == b.weekday && isDateSame && a.time == b.time;
}

void print(Context &context, const QVector<ScheduleEntry> &entries)
{
    context.showTable(client::scheduleColumns(), entries, QStringLiteral("there are no drives"));
}

/// Sends the entry and checks that the reply contains it, because the service ignores one that does not fit.
void store(Context &context, const ScheduleEntry &entry)
{
    const auto entries = context.ask(requests::setSchedule(entry));
    const bool isStored = std::any_of(entries.cbegin(), entries.cend(),
                                      [&](const ScheduleEntry &stored) { return isSame(stored, entry); });
    if (entry.drive >= entries.size())
        context.refuse(QStringLiteral("the service has no drive %1").arg(entry.drive));
    if (!isStored)
        context.refuse(QStringLiteral("the service did not accept the schedule"));
    if (context.wantsJson())
        print(context, entries);
    else
        context.output().note(QStringLiteral("drive %1: %2").arg(entry.drive).arg(scheduleText(entry)));
}

void showSchedule(Context &context)
{
    print(context, context.ask(requests::schedule()));
}

void setSchedule(Context &context)
{
    const qint32 drive = context.driveArgument();
    const ScheduleEntry entry = parseEntry(context, drive, context.arguments().positionals.mid(1));
    if (entry.kind == ScheduleKind::Once) {
        const QDateTime now = context.greeting().time.toTimeZone(context.zone());
        if (QDateTime(entry.date, entry.time, context.zone()) <= now)
            context.refuse(QStringLiteral("this time has passed: the service's clock is at %1")
                               .arg(now.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss"))));
    }
    store(context, entry);
}

void clearSchedule(Context &context)
{
    store(context, entryOf(context.driveArgument(), ScheduleKind::None));
}

} // namespace

QVector<Command> scheduleCommands()
{
    Command set = command("schedule set", "N once DATE TIME | N daily TIME | N weekly DAY TIME", 2, 4,
                          setSchedule, "Set the time at which the whole of drive N is scanned.",
                          "For example 'once 2026-11-15 03:30', 'daily 03:30' or 'weekly sunday 03:30', by "
                          "the service's clock.");
    set.words = QStringLiteral("once daily weekly monday tuesday wednesday thursday friday saturday sunday")
                    .split(QLatin1Char(' '));
    return {
        command("schedule show", "", 0, 0, showSchedule, "Show the times at which drives are scanned."),
        set,
        command("schedule clear", "N", 1, 1, clearSchedule, "Remove the schedule of drive N."),
    };
}
