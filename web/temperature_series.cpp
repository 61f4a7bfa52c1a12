// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/temperature_series.h"

#include <QJsonArray>

#include <algorithm>

namespace web {

namespace {

struct Sample
{
    qint64 time = 0;
    qint32 celsius = 0;
};

QVector<Sample> select(const client::TemperatureHistory &history, const TemperatureQuery &query,
                       ServiceClock &clock)
{
    QVector<Sample> samples;
    for (const client::TemperatureRecord &record : history.records) {
        if (record.drive != query.drive || !record.temperature)
            continue;
        const qint64 time = clock.secondsSinceEpoch(record.time);
        if (time >= query.from && time <= query.to)
            samples.append({time, *record.temperature});
    }
    return samples;
}

QString timeText(qint64 seconds)
{
    return QDateTime::fromSecsSinceEpoch(seconds, Qt::UTC).toString(Qt::ISODate);
}

struct Period
{
    qint64 firstTime = 0;
    qint32 lowest = 0;
    qint32 highest = 0;
    qint64 sum = 0;
    int count = 0;

    void add(const Sample &sample)
    {
        firstTime = count == 0 ? sample.time : std::min(firstTime, sample.time);
        lowest = count == 0 ? sample.celsius : std::min(lowest, sample.celsius);
        highest = count == 0 ? sample.celsius : std::max(highest, sample.celsius);
        sum += sample.celsius;
        ++count;
    }
};

/// The periods share the time between the first and the last sample: what was asked for may begin years
/// before the first record.
QVector<Period> split(const QVector<Sample> &samples, int points)
{
    const auto [first, last] = std::minmax_element(
        samples.cbegin(), samples.cend(), [](const Sample &a, const Sample &b) { return a.time < b.time; });
    const double length = double(last->time - first->time + 1) / points;
    QVector<Period> periods(points);
    for (const Sample &sample : samples)
        periods[std::min(points - 1, int(double(sample.time - first->time) / length))].add(sample);
    return periods;
}

} // namespace

QJsonObject temperatureSeries(const client::TemperatureHistory &history, const TemperatureQuery &query,
                              ServiceClock clock)
{
    QJsonArray points;
    const QVector<Sample> samples = select(history, query, clock);
    if (samples.isEmpty())
        return {{QStringLiteral("points"), points}};
    for (const Period &period : split(samples, query.points)) {
        if (period.count == 0)
            continue;
        points.append(QJsonObject{{QStringLiteral("time"), timeText(period.firstTime)},
                                  {QStringLiteral("min"), period.lowest},
                                  {QStringLiteral("mean"), double(period.sum) / period.count},
                                  {QStringLiteral("max"), period.highest}});
    }
    return {{QStringLiteral("points"), points}};
}

QByteArray temperatureCsv(const client::TemperatureHistory &history, const TemperatureQuery &query,
                          ServiceClock clock)
{
    QByteArray csv = QByteArrayLiteral("time,temperatureCelsius\n");
    for (const Sample &sample : select(history, query, clock))
        csv += timeText(sample.time).toLatin1() + ',' + QByteArray::number(sample.celsius) + '\n';
    return csv;
}

} // namespace web
