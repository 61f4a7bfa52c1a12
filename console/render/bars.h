// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/scans.h"
#include "console/render/style.h"

#include <QString>
#include <QVector>

namespace render {

/// Returns a bar of `width` columns with `fraction` (0 to 1) of it filled, to an eighth of a column.
[[nodiscard]] QString progressBar(double fraction, int width);

/// Returns the last `width` values as columns between an eighth and the whole height. The scale spans at
/// least `smallestSpan`, so that small changes look small.
[[nodiscard]] QString sparkline(const QVector<int> &values, int width, int smallestSpan);

/// Returns a map of a drive with `sectors` sectors: read, bad, and not read. One bad sector marks its cell.
[[nodiscard]] QString surfaceMap(const client::ScanStatus &status, quint64 sectors, int width,
                                 const Style &style);

/// Returns the legend of surface maps.
[[nodiscard]] QString surfaceLegend(const Style &style);

} // namespace render
