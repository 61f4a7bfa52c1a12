// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/service_clock.h"

#include "client/history.h"

#include <QByteArray>
#include <QJsonObject>

namespace web {

/// Which records of a history are wanted.
struct TemperatureQuery
{
    qint32 drive = 0;
    qint64 from = 0; ///< seconds since 1970
    qint64 to = 0;
    int points = 500;
};

/// Returns {"points": [{"time", "min", "mean", "max"}]}: the records in at most `points` periods of equal
/// length; a period without records is left out. `time` is that of the first record in a period.
[[nodiscard]] QJsonObject temperatureSeries(const client::TemperatureHistory &history,
                                            const TemperatureQuery &query, ServiceClock clock);

/// Returns the records as CSV with a header.
[[nodiscard]] QByteArray temperatureCsv(const client::TemperatureHistory &history,
                                        const TemperatureQuery &query, ServiceClock clock);

} // namespace web
