// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/greeting.h"
#include "client/inventory.h"
#include "client/scans.h"
#include "console/render/style.h"

#include <QDateTime>
#include <QStringList>
#include <QVector>

#include <optional>

namespace render {

/// The content of the live screen: the latest replies, and the problem if there is one.
struct WatchState
{
    QString endpoint;
    std::optional<client::Greeting> greeting;
    QVector<client::Drive> drives;
    QVector<client::ScanStatus> scans;  ///< may lack drives
    QVector<QVector<int>> temperatures; ///< of each drive, oldest first
    QDateTime answered;                 ///< invalid before the first reply
    QString problem;                    ///< empty while the service answers
};

/// Returns at most `rows` lines of at most `style.width` columns. `firstRow` is the first drive if not all of
/// them fit; it is limited to the range.
[[nodiscard]] QStringList watchScreen(const WatchState &state, int rows, int firstRow, const Style &style);

/// Returns the number of drives that fit on a screen of `rows` lines.
[[nodiscard]] int watchCapacity(int rows);

} // namespace render
