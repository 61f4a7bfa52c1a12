// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/hourly_temperatures.h"

namespace web {

namespace {

constexpr qint64 kHour = 3600;

} // namespace

void HourlyTemperatures::add(qint32 drive, qint64 secondsSinceEpoch, qint32 celsius)
{
    Sum &sum = m_hours[drive][secondsSinceEpoch / kHour];
    sum.total += celsius;
    ++sum.count;
}

HourlyMeans HourlyTemperatures::means(qint32 drive, qint64 nowSeconds)
{
    HourlyMeans means;
    QMap<qint64, Sum> &hours = m_hours[drive];
    const qint64 first = nowSeconds / kHour - qint64(means.size()) + 1;
    while (!hours.isEmpty() && hours.firstKey() < first)
        hours.erase(hours.begin());
    for (auto hour = hours.cbegin(); hour != hours.cend(); ++hour) {
        const auto index = size_t(hour.key() - first);
        if (index < means.size())
            means[index] = hour->total / hour->count;
    }
    return means;
}

} // namespace web
