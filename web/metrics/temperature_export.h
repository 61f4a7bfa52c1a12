// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/history.h"
#include "client/inventory.h"
#include "web/service_clock.h"

#include <QByteArray>

namespace web::metrics {

/// Returns a whole temperature history as OpenMetrics with time stamps, the series of one drive after the
/// other, each in the order of time. Of an hour that repeats in autumn the first records are kept. Records of
/// drives that are not listed are left out: their drive is not known.
[[nodiscard]] QByteArray exportTemperatures(const client::TemperatureHistory &history,
                                            const QVector<client::Drive> &drives, const QString &instance,
                                            ServiceClock clock);

} // namespace web::metrics
