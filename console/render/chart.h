// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/history.h"

#include <QDateTime>
#include <QStringList>
#include <QVector>

namespace render {

/// Returns a chart of the temperatures of one drive, `width` columns wide and `height` rows high without the
/// time axis. A column shows the highest value of its time span, and is empty without one. Returns nothing
/// without a temperature.
[[nodiscard]] QStringList temperatureChart(const QVector<client::TemperatureRecord> &records, int width,
                                           int height);

} // namespace render
