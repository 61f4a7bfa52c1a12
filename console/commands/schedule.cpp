// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/requests.h"
#include "console/client/scans.h"
#include "console/commands/command.h"
#include "console/render/table.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace {

using client::ScheduleEntry;
using client::ScheduleKind;

const QStringList kWeekdays{
    QStringLiteral("monday"),   QStringLiteral("tuesday"), QStringLiteral("wednesday"),
    QStringLiteral("thursday"), QStringLiteral("friday"),  QStringLiteral("saturday"),
    QStringLiteral("sunday"),
};

const QString kDateForm = QStringLiteral("yyyy-MM-dd");
const QString kTimeForm = QStringLiteral("HH:mm:ss");

QString kindWord(ScheduleKind kind)
{
    switch (kind) {
    case ScheduleKind::None:
        return QStringLiteral("none");
    case ScheduleKind::Once:
        return QStringLiteral("once");
    case ScheduleKind::Daily:
        return QStringLiteral("daily");
    case ScheduleKind::Weekly:
        return QStringLiteral("weekly");
    case ScheduleKind::Unknown:
        break;
    }
    return QStringLiteral("unknown");
}

/// What a person would call the moment; "never" when the service holds one that cannot come.
QString entryText(const ScheduleEntry &entry)
{
    const QString never = QStringLiteral("never: the stored moment does not exist");
    if (entry.kind == ScheduleKind::None)
        return QStringLiteral("no scan scheduled");
    if (entry.kind == ScheduleKind::Unknown)
        return QStringLiteral("never: the stored kind of schedule does not exist");
    if (!entry.time.isValid())
        return never;
    const QString time = entry.time.toString(kTimeForm);
    if (entry.kind == ScheduleKind::Daily)
        return QStringLiteral("daily at ") + time;
    if (entry.kind == ScheduleKind::Once)
        return entry.date.isValid() ? QStringLiteral("once, %1 %2").arg(entry.date.toString(kDateForm), time)
                                    : never;
    const QString weekday = kWeekdays.value(entry.weekday);
    return weekday.isEmpty() ? never : QStringLiteral("every %1 at %2").arg(weekday, time);
}

std::optional<QTime> parseClock(const QString &text)
{
    for (const char *form : {"HH:mm:ss", "HH:mm"}) {
        const QTime time = QTime::fromString(text, QLatin1String(form));
        if (time.isValid())
            return time;
    }
    return std::nullopt;
}

/// The schedule that the words after the drive's number describe.
std::optional<ScheduleEntry> parseEntry(qint32 drive, const QStringList &words)
{
    ScheduleEntry entry;
    entry.drive = drive;
    entry.date = QDate::currentDate(); // sent with every kind, meant by "once" alone
    const QString kind = words.value(0);
    const auto time = parseClock(words.value(words.size() - 1));
    if (!time)
        return std::nullopt;
    entry.time = *time;
    if (kind == QLatin1String("daily") && words.size() == 2) {
        entry.kind = ScheduleKind::Daily;
        return entry;
    }
    if (words.size() != 3)
        return std::nullopt;
    if (kind == QLatin1String("weekly")) {
        entry.kind = ScheduleKind::Weekly;
        entry.weekday = qint32(kWeekdays.indexOf(words.at(1).toLower()));
        return entry.weekday >= 0 ? std::optional<ScheduleEntry>(entry) : std::nullopt;
    }
    entry.kind = ScheduleKind::Once;
    entry.date = QDate::fromString(words.at(1), kDateForm);
    const bool isStorable = entry.date.isValid() && entry.date.year() >= 2000 && entry.date.year() <= 2099;
    return kind == QLatin1String("once") && isStorable ? std::optional<ScheduleEntry>(entry) : std::nullopt;
}

bool isSame(const ScheduleEntry &a, const ScheduleEntry &b)
{
    return a.drive == b.drive && a.kind == b.kind && a.weekday == b.weekday && a.date == b.date &&
           a.time == b.time;
}

QJsonObject entryObject(const ScheduleEntry &entry)
{
    QJsonObject object{{QStringLiteral("drive"), entry.drive},
                       {QStringLiteral("kind"), kindWord(entry.kind)}};
    if (entry.kind != ScheduleKind::None)
        object.insert(QStringLiteral("time"), entry.time.toString(kTimeForm));
    if (entry.kind == ScheduleKind::Once)
        object.insert(QStringLiteral("date"), entry.date.toString(kDateForm));
    if (entry.kind == ScheduleKind::Weekly)
        object.insert(QStringLiteral("weekday"), kWeekdays.value(entry.weekday));
    return object;
}

void print(Context &context, const QVector<ScheduleEntry> &entries)
{
    if (context.wantsJson()) {
        QJsonArray array;
        for (const ScheduleEntry &entry : entries)
            array.append(entryObject(entry));
        context.output().print(QJsonDocument(array));
        return;
    }
    render::Table table;
    table.addColumn(QStringLiteral("Drive"), render::Align::Right);
    table.addColumn(QStringLiteral("Surface scan"));
    for (const ScheduleEntry &entry : entries)
        table.addRow({{QString::number(entry.drive)}, {entryText(entry)}});
    context.output().print(table.lines(context.style()));
}

/// Sends `entry` and checks in the reply that it is what the service now holds: it says nothing when it
/// refuses one.
int store(Context &context, const ScheduleEntry &entry)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto entries = context.session().query(client::requests::setSchedule(entry), client::parseSchedule);
    if (!entries)
        return context.fail(entries.failure());
    const bool isStored = std::any_of(entries->cbegin(), entries->cend(),
                                      [&](const ScheduleEntry &stored) { return isSame(stored, entry); });
    if (!isStored)
        return context.refuse(entry.drive >= entries->size()
                                  ? QStringLiteral("the service has no drive %1").arg(entry.drive)
                                  : QStringLiteral("the service has not taken the schedule"));
    if (context.wantsJson())
        print(context, *entries);
    else
        context.output().note(
            QStringLiteral("drive %1: %2").arg(QString::number(entry.drive), entryText(entry)));
    return kExitFine;
}

} // namespace

int runScheduleShow(Context &context)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto entries = context.session().query(QStringLiteral("GETSCANSCHED"), client::parseSchedule);
    if (!entries)
        return context.fail(entries.failure());
    print(context, *entries);
    return kExitFine;
}

int runScheduleSet(Context &context)
{
    const auto drive = context.driveArgument();
    if (!drive)
        return context.refuseDrive();
    const auto entry = parseEntry(*drive, context.arguments().positionals.mid(1));
    if (!entry)
        return context.refuse(
            QStringLiteral("a schedule is 'once 2026-11-15 03:30', 'daily 03:30' or 'weekly sunday 03:30'"));
    return store(context, *entry);
}

int runScheduleClear(Context &context)
{
    const auto drive = context.driveArgument();
    if (!drive)
        return context.refuseDrive();
    ScheduleEntry entry;
    entry.drive = *drive;
    entry.date = QDate::currentDate();
    entry.time = QTime(0, 0);
    return store(context, entry);
}
