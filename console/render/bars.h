// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/scans.h"
#include "console/render/style.h"

#include <QString>
#include <QVector>

namespace render {

/// `fraction` (0 to 1) of `width` columns filled, to an eighth of a column.
[[nodiscard]] QString progressBar(double fraction, int width);

/// The last `width` values as columns of an eighth to eight eighths, lowest to highest. The scale spans at
/// least `smallestSpan`, so that noise does not look like a mountain.
[[nodiscard]] QString sparkline(const QVector<int> &values, int width, int smallestSpan);

/// A drive of `sectors` sectors from left to right: what the scan has read, what it could not read, and
/// what it has not reached. One bad sector is enough to mark its cell.
[[nodiscard]] QString surfaceMap(const client::ScanStatus &status, quint64 sectors, int width,
                                 const Style &style);

/// What the cells of a surface map mean.
[[nodiscard]] QString surfaceLegend(const Style &style);

} // namespace render
