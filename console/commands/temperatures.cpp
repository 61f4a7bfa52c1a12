// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"
#include "client/documents.h"
#include "client/units.h"
#include "console/context.h"
#include "console/render/chart.h"

#include <algorithm>

namespace {

using client::TemperatureRecord;
using Records = QVector<TemperatureRecord>;

constexpr int kChartHeight = 10;

/// Times of the service's clock, both inclusive.
struct Period
{
    QDateTime from;
    QDateTime to;
};

/// Returns the time that `option` gives, or `usual` without the option.
QDateTime timeOption(const Context &context, const QString &option, const QDateTime &usual)
{
    const auto text = context.arguments().value(option);
    const auto time = text ? client::parseTime(*text) : usual;
    if (!time || time->date().year() < 2000 || time->date().year() > 2099)
        context.refuse(
            QStringLiteral("--%1 takes a time such as '2026-11-15 08:00', not '%2'").arg(option, *text));
    return *time;
}

/// Returns the period of the options: by default the last day, without an end.
Period periodOf(Context &context)
{
    QDateTime now = context.greeting().time.toTimeZone(context.zone());
    now.setTimeSpec(Qt::UTC);
    const Period period{
        timeOption(context, QStringLiteral("from"), now.addDays(-1)),
        timeOption(context, QStringLiteral("to"), QDateTime(QDate(2099, 12, 31), QTime(23, 59, 59), Qt::UTC)),
    };
    if (period.from > period.to)
        context.refuse(QStringLiteral("--from is later than --to"));
    return period;
}

/// Returns the records of one drive within the period; the reply has those of all drives, and one later
/// record.
Records select(const client::TemperatureHistory &history, qint32 drive, const Period &period)
{
    Records records;
    std::copy_if(history.records.cbegin(), history.records.cend(), std::back_inserter(records),
                 [&](const TemperatureRecord &record) {
                     return record.drive == drive && record.time >= period.from && record.time <= period.to;
                 });
    return records;
}

QStringList summary(const Records &records)
{
    QVector<qint32> values;
    for (const TemperatureRecord &record : records) {
        if (record.temperature)
            values.append(*record.temperature);
    }
    if (values.isEmpty())
        return {QStringLiteral("records: %1, none with a readable temperature").arg(records.size())};
    const auto [lowest, highest] = std::minmax_element(values.cbegin(), values.cend());
    qint64 sum = 0;
    for (const qint32 value : values)
        sum += value;
    return {QStringLiteral("records: %1, from %2 to %3")
                .arg(QString::number(records.size()), client::timeText(records.first().time),
                     client::timeText(records.last().time)),
            QStringLiteral("lowest %1 °C, highest %2 °C, mean %3 °C")
                .arg(QString::number(*lowest), QString::number(*highest),
                     QString::number(double(sum) / values.size(), 'f', 1))};
}

void temperatures(Context &context)
{
    const qint32 drive = context.driveArgument();
    const Period period = periodOf(context);
    (void)context.ask(client::requests::drive(drive)); // a history has no error for an unknown drive
    const auto history = context.ask(client::requests::temperatures(period.from, period.to));
    if (history.damaged > 0)
        context.output().note(QStringLiteral("%1 damaged records are left out").arg(history.damaged));
    const Records records = select(history, drive, period);
    Output &output = context.output();
    if (context.wantsJson()) {
        output.print(QJsonDocument(client::documents::temperatures(drive, records, context.zone())));
    } else if (context.arguments().has(QStringLiteral("csv"))) {
        output.print(toCsv(client::temperatureColumns(context.zone()), records));
    } else if (records.isEmpty()) {
        output.note(QStringLiteral("there are no temperature records of drive %1 for this time").arg(drive));
    } else {
        if (context.style().hasGraphics && records.size() > 1)
            output.print(render::temperatureChart(records, context.style().width, kChartHeight));
        output.print(summary(records));
    }
}

} // namespace

QVector<Command> temperatureCommands()
{
    return {
        command("temperatures", "N", 1, 1, temperatures, "Show the temperature history of drive N.",
                "Times are those of the service's clock, such as '2026-11-15' or '2026-11-15 08:00'.",
                {option("from", "TIME", "The beginning of the history (a day ago)."),
                 option("to", "TIME", "The end of the history (the latest record)."),
                 option("csv", "", "Print one record per line: time,temperatureCelsius.")}),
    };
}
