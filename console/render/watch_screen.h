// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/greeting.h"
#include "console/client/inventory.h"
#include "console/client/scans.h"
#include "console/render/style.h"

#include <QDateTime>
#include <QStringList>
#include <QVector>

#include <optional>

namespace render {

/// What the live screen shows: the latest answers, or what keeps them from coming.
struct WatchState
{
    QString endpoint;
    std::optional<client::Greeting> greeting;
    QVector<client::Drive> drives;
    QVector<client::ScanStatus> scans;  ///< may lack drives
    QVector<QVector<int>> temperatures; ///< of each drive, oldest first
    QDateTime answered;                 ///< invalid before the first answer
    QString problem;                    ///< empty while the service answers
};

/// The screen, at most `rows` lines of at most `style.width` columns. `firstRow` is the drive on top when
/// not all of them fit; it is brought into range.
[[nodiscard]] QStringList watchScreen(const WatchState &state, int rows, int firstRow, const Style &style);

/// How many drives fit on a screen of `rows` lines.
[[nodiscard]] int watchCapacity(int rows);

} // namespace render
