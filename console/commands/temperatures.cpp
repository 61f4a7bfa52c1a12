// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/history.h"
#include "console/client/requests.h"
#include "console/commands/command.h"
#include "console/render/chart.h"
#include "console/render/units.h"

#include <QJsonArray>
#include <QJsonObject>

#include <algorithm>

namespace {

using namespace std::chrono_literals;

constexpr auto kHistoryPatience = 60s; // decades of records are many megabytes
constexpr int kChartHeight = 10;

struct Period
{
    QDateTime from;
    QDateTime to;
};

/// The period asked for: by default the last day, without an end, since nothing is recorded ahead of time.
std::optional<Period> periodOf(const Arguments &arguments)
{
    const QDateTime lastMoment(QDate(2099, 12, 31), QTime(23, 59, 59));
    Period period{QDateTime::currentDateTime().addDays(-1), lastMoment};
    if (const auto text = arguments.value(QStringLiteral("from"))) {
        const auto from = render::parseTime(*text);
        if (!from)
            return std::nullopt;
        period.from = *from;
    }
    if (const auto text = arguments.value(QStringLiteral("to"))) {
        const auto to = render::parseTime(*text);
        if (!to)
            return std::nullopt;
        period.to = *to;
    }
    const auto isRecordable = [](const QDateTime &time) {
        return time.date().year() >= 2000 && time.date().year() <= 2099;
    };
    if (!isRecordable(period.from) || !isRecordable(period.to) || period.from > period.to)
        return std::nullopt;
    return period;
}

/// The drive's records within the period: the service sends every drive's, and one beyond the end.
QVector<client::TemperatureRecord> select(const client::TemperatureHistory &history, qint32 drive,
                                          const Period &period)
{
    QVector<client::TemperatureRecord> records;
    std::copy_if(history.records.cbegin(), history.records.cend(), std::back_inserter(records),
                 [&](const client::TemperatureRecord &record) {
                     return record.drive == drive && record.time >= period.from && record.time <= period.to;
                 });
    return records;
}

QStringList summary(const QVector<client::TemperatureRecord> &records)
{
    int lowest = std::numeric_limits<int>::max();
    int highest = std::numeric_limits<int>::min();
    qint64 sum = 0;
    int count = 0;
    for (const client::TemperatureRecord &record : records) {
        if (!record.temperature)
            continue;
        lowest = std::min(lowest, *record.temperature);
        highest = std::max(highest, *record.temperature);
        sum += *record.temperature;
        ++count;
    }
    if (count == 0)
        return {QStringLiteral("records: %1, none with a readable temperature").arg(records.size())};
    return {QStringLiteral("records: %1, from %2 to %3")
                .arg(QString::number(records.size()), render::timeText(records.first().time),
                     render::timeText(records.last().time)),
            QStringLiteral("lowest %1 °C, highest %2 °C, mean %3 °C")
                .arg(QString::number(lowest), QString::number(highest),
                     QString::number(double(sum) / count, 'f', 1))};
}

QJsonArray recordArray(const QVector<client::TemperatureRecord> &records)
{
    QJsonArray array;
    for (const client::TemperatureRecord &record : records) {
        array.append(QJsonObject{
            {QStringLiteral("time"), render::isoTime(record.time)},
            {QStringLiteral("temperatureCelsius"),
             record.temperature ? QJsonValue(*record.temperature) : QJsonValue()},
        });
    }
    return array;
}

QStringList csvLines(const QVector<client::TemperatureRecord> &records)
{
    QStringList lines{QStringLiteral("time,temperatureCelsius")};
    for (const client::TemperatureRecord &record : records) {
        const QString temperature = record.temperature ? QString::number(*record.temperature) : QString();
        lines.append(render::isoTime(record.time) + QLatin1Char(',') + temperature);
    }
    return lines;
}

} // namespace

int runTemperatures(Context &context)
{
    const auto drive = context.driveArgument();
    if (!drive)
        return context.refuseDrive();
    const auto period = periodOf(context.arguments());
    if (!period)
        return context.refuse(
            QStringLiteral("--from and --to take times such as '2026-11-15 08:00', in order"));
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto history = context.session().query(client::requests::temperatures(period->from, period->to),
                                                 client::parseHistory, context.patience(kHistoryPatience));
    if (!history)
        return context.fail(history.failure());

    Output &output = context.output();
    if (history->damaged > 0)
        output.note(QStringLiteral("%1 damaged records left out").arg(history->damaged));
    const auto records = select(*history, *drive, *period);
    if (context.wantsJson())
        output.print(QJsonDocument(QJsonObject{{QStringLiteral("drive"), *drive},
                                               {QStringLiteral("records"), recordArray(records)}}));
    else if (context.arguments().has(QStringLiteral("csv")))
        output.print(csvLines(records));
    else if (records.isEmpty())
        output.note(QStringLiteral("no temperature of drive %1 is recorded for this time").arg(*drive));
    else {
        if (context.style().hasGraphics && records.size() > 1)
            output.print(render::temperatureChart(records, context.style().width, kChartHeight));
        output.print(summary(records));
    }
    return kExitFine;
}
