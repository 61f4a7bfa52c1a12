// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/metrics/temperature_export.h"

#include "web/metrics/device_label.h"
#include "web/metrics/metric_family.h"

#include <algorithm>

namespace web::metrics {

namespace {

constexpr qint64 kRepeatedHour = 3600;

struct Sample
{
    qint64 time = 0; ///< seconds since 1970
    qint32 celsius = 0;
};

/// The samples of one drive in the order in which they were written.
class Series
{
public:
    void add(const Sample &sample)
    {
        // A clock that goes back by at most an hour passes the same local times again.
        const bool isRepeated = sample.time <= m_latest && m_latest - sample.time <= kRepeatedHour;
        if (isRepeated)
            return;
        m_latest = sample.time;
        m_samples.append(sample);
    }

    /// Returns the samples by time, one for each time: the clock may have been set back by more.
    [[nodiscard]] QVector<Sample> sorted() const
    {
        QVector<Sample> samples = m_samples;
        std::stable_sort(samples.begin(), samples.end(),
                         [](const Sample &a, const Sample &b) { return a.time < b.time; });
        const auto end = std::unique(samples.begin(), samples.end(),
                                     [](const Sample &a, const Sample &b) { return a.time == b.time; });
        samples.erase(end, samples.end());
        return samples;
    }

private:
    QVector<Sample> m_samples;
    qint64 m_latest = 0;
};

} // namespace

QByteArray exportTemperatures(const client::TemperatureHistory &history, const QVector<client::Drive> &drives,
                              const QString &instance, ServiceClock clock)
{
    QVector<Series> series(drives.size());
    for (const client::TemperatureRecord &record : history.records) {
        if (record.temperature && record.drive < series.size())
            series[record.drive].add({clock.secondsSinceEpoch(record.time), *record.temperature});
    }
    const char *const name = "smartctl_device_temperature";
    QByteArray text;
    appendHeader(text, {name, Type::Gauge, "Temperature in degrees Celsius.", {}}, Format::OpenMetrics);
    const QStringList devices = deviceNames(drives);
    for (int i = 0; i < series.size(); ++i) {
        const QByteArray labels = Labels()
                                      .add("device", devices.at(i))
                                      .add("temperature_type", QStringLiteral("current"))
                                      .add("instance", instance)
                                      .text();
        for (const Sample &sample : series.at(i).sorted())
            text += QByteArray(name) + '{' + labels + "} " + QByteArray::number(sample.celsius) + ' ' +
                    QByteArray::number(sample.time) + '\n';
    }
    return text + "# EOF\n";
}

} // namespace web::metrics
