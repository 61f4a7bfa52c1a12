// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/watch_screen.h"

#include "console/client/failure.h"
#include "console/render/bars.h"
#include "console/render/level.h"
#include "console/render/table.h"
#include "console/render/units.h"

#include <algorithm>

namespace render {

namespace {

constexpr int kLinesBesidesDrives = 5; ///< title, alert line, empty line, heading, footer
constexpr int kTrendWidth = 10;
constexpr int kTrendSpan = 5; ///< degrees
constexpr int kScanBarWidth = 10;
constexpr int kWideScreen = 110; ///< columns from which on serial numbers and bars are shown

QString title(const WatchState &state)
{
    if (!state.greeting)
        return QStringLiteral("%1").arg(state.endpoint);
    return QStringLiteral("%1 (%2), %3")
        .arg(client::visible(state.greeting->hostName), state.endpoint,
             client::visible(state.greeting->version));
}

qint32 worstLevel(const QVector<client::Drive> &drives)
{
    qint32 worst = 0;
    for (const client::Drive &drive : drives)
        worst = std::max(worst, drive.isRated() ? drive.statusLevel : 0);
    return worst;
}

Cell alert(const WatchState &state)
{
    if (!state.problem.isEmpty()) {
        const QString since = state.answered.isValid()
                                  ? QStringLiteral(" (last answer %1)").arg(timeText(state.answered))
                                  : QString();
        return {state.problem + since, Colour::Bad};
    }
    const qint32 worst = worstLevel(state.drives);
    if (worst <= 1)
        return {worst == 0 ? QStringLiteral("no drive is rated")
                           : QStringLiteral("all rated drives are fine"),
                levelColour(worst)};
    QStringList texts;
    for (int i = 0; i < state.drives.size(); ++i) {
        const client::Drive &drive = state.drives.at(i);
        if (drive.isRated() && drive.statusLevel == worst)
            texts.append(QStringLiteral("%1 %2").arg(i).arg(client::visible(drive.model)));
    }
    const QString number = texts.size() == 1 ? QString() : QStringLiteral(", %1 drives").arg(texts.size());
    return {levelText(worst) + number + QStringLiteral(": ") + texts.join(QStringLiteral(", ")),
            levelColour(worst)};
}

/// How far the scan of `drive` is, and what the last one has found; a bar where there is room for it.
Cell scanCell(const WatchState &state, int drive, bool isWide)
{
    const auto scan =
        std::find_if(state.scans.cbegin(), state.scans.cend(),
                     [drive](const client::ScanStatus &status) { return status.drive == drive; });
    if (scan == state.scans.cend())
        return {};
    QStringList parts;
    if (scan->state == client::ScanState::Running)
        parts.append(QStringLiteral("%1 %").arg(scan->percent, 3));
    if (scan->state == client::ScanState::Failed)
        parts.append(QStringLiteral("failed"));
    if (!scan->badRanges.isEmpty())
        parts.append(QStringLiteral("%1 bad").arg(scan->badRanges.size()));
    if (isWide && scan->state == client::ScanState::Running)
        parts.prepend(progressBar(scan->percent / 100.0, kScanBarWidth));
    return {parts.join(QLatin1Char(' ')), scan->badRanges.isEmpty() ? Colour::Plain : Colour::Bad};
}

QStringList driveLines(const WatchState &state, int first, int count, const Style &style)
{
    const bool isWide = style.width >= kWideScreen;
    Table table;
    table.addColumn(QStringLiteral("No"), Align::Right);
    table.addColumn(QStringLiteral("Model"), Align::Left, Table::Shrink::Yes);
    if (isWide)
        table.addColumn(QStringLiteral("Serial"), Align::Left, Table::Shrink::Yes);
    table.addColumn(QStringLiteral("Size"), Align::Right);
    table.addColumn(QStringLiteral("Temp"), Align::Right);
    table.addColumn(QStringLiteral("Trend"), Align::Left, Table::Shrink::Yes);
    table.addColumn(QStringLiteral("Health"), Align::Right);
    table.addColumn(QStringLiteral("Level"));
    table.addColumn(QStringLiteral("Scan"), Align::Left, Table::Shrink::Yes);
    for (int i = first; i < std::min(first + count, int(state.drives.size())); ++i) {
        const client::Drive &drive = state.drives.at(i);
        QVector<Cell> row{{QString::number(i)}, {client::visible(drive.model)}};
        if (isWide)
            row.append({client::visible(drive.serial)});
        row += QVector<Cell>{{sizeText(drive.capacity)},
                             temperatureCell(drive),
                             {sparkline(state.temperatures.value(i), kTrendWidth, kTrendSpan)},
                             healthCell(drive),
                             levelCell(drive),
                             scanCell(state, i, isWide)};
        table.addRow(row);
    }
    return table.lines(style);
}

QString footer(const WatchState &state, int first, int shown)
{
    QString text = QStringLiteral("q quits");
    if (shown < state.drives.size())
        text += QStringLiteral(", arrows scroll: drives %1 to %2 of %3")
                    .arg(first)
                    .arg(first + shown - 1)
                    .arg(state.drives.size());
    if (state.answered.isValid())
        text += QStringLiteral(", %1").arg(timeText(state.answered));
    return text;
}

} // namespace

int watchCapacity(int rows)
{
    return std::max(1, rows - kLinesBesidesDrives);
}

QStringList watchScreen(const WatchState &state, int rows, int firstRow, const Style &style)
{
    const int count = int(state.drives.size());
    const int shown = std::min(count, watchCapacity(rows));
    const int first = std::clamp(firstRow, 0, count - shown);
    const Cell alertCell = alert(state);
    QStringList lines{painted(cut(title(state), style.width), Colour::Strong, style),
                      painted(cut(alertCell.text, style.width), alertCell.colour, style), QString()};
    if (count > 0)
        lines += driveLines(state, first, shown, style);
    lines.append(painted(cut(footer(state, first, shown), style.width), Colour::Dim, style));
    return lines.mid(0, rows);
}

} // namespace render
