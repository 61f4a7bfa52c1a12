// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/history.h"

#include <QDateTime>
#include <QStringList>
#include <QVector>

namespace render {

/// The temperatures of one drive over time, `width` columns wide and `height` rows high without the time
/// axis. A column shows the highest value of its span of time; one without a value stays empty, so that
/// gaps are seen. Empty when there is nothing to show.
[[nodiscard]] QStringList temperatureChart(const QVector<client::TemperatureRecord> &records, int width,
                                           int height);

} // namespace render
