// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/watch_screen.h"

#include "client/columns.h"
#include "client/failure.h"
#include "client/units.h"
#include "console/render/bars.h"
#include "console/render/table.h"
#include "console/render/text.h"

#include <algorithm>

namespace render {

namespace {

using client::Cell;
using client::Layout;
using client::Level;
using client::Tone;

constexpr int kLinesBesidesDrives = 5; ///< title, alert line, empty line, heading, footer
constexpr int kTrendWidth = 10;
constexpr int kTrendSpan = 5; ///< degrees
constexpr int kTemperatureWidth = 5;
constexpr int kLevelWidth = 9;
constexpr int kScanBarWidth = 10;
constexpr int kScanWidth = 11;
constexpr int kWideScanWidth = kScanBarWidth + 1 + kScanWidth;
constexpr int kUsualScreen = 80;
constexpr int kWideScreen = 110; ///< columns from which serial numbers and bars are shown

QString title(const WatchState &state)
{
    if (!state.greeting)
        return state.endpoint;
    return QStringLiteral("%1 (%2), %3")
        .arg(client::visible(state.greeting->hostName), state.endpoint,
             client::visible(state.greeting->version));
}

/// Returns the drives of a level: "critical: 2 MODEL, 5 MODEL"; empty if there are none.
QString levelPart(const QVector<client::Drive> &drives, Level level)
{
    QStringList texts;
    for (const client::Drive &drive : drives) {
        if (drive.level() == level)
            texts.append(QStringLiteral("%1 %2").arg(drive.number).arg(client::visible(drive.model)));
    }
    return texts.isEmpty() ? QString()
                           : levelName(level) + QStringLiteral(": ") + texts.join(QStringLiteral(", "));
}

/// Returns how many drives are at a level: "2 critical"; empty if there are none.
QString countPart(const QVector<client::Drive> &drives, Level level)
{
    const auto count = std::count_if(drives.cbegin(), drives.cend(),
                                     [level](const client::Drive &drive) { return drive.level() == level; });
    return count == 0 ? QString() : QStringLiteral("%1 %2").arg(count).arg(levelName(level));
}

/// Returns the drives above level fine. Where the screen is too narrow for their names, the counts of both
/// levels come first, so that a critical drive does not hide the warnings.
Cell alert(const WatchState &state, int width)
{
    if (!state.problem.isEmpty()) {
        const QString since = state.answered.isValid()
                                  ? QStringLiteral(" (last answer %1)").arg(client::timeText(state.answered))
                                  : QString();
        return {state.problem + since, Tone::Bad};
    }
    Level worst = Level::NotRated;
    for (const client::Drive &drive : state.drives)
        worst = std::max(worst, drive.level());
    if (worst <= Level::Fine)
        return {worst == Level::NotRated ? QStringLiteral("no drive is rated")
                                         : QStringLiteral("all rated drives are fine"),
                levelTone(worst)};
    QStringList counts{countPart(state.drives, Level::Critical), countPart(state.drives, Level::Warning)};
    QStringList parts{levelPart(state.drives, Level::Critical), levelPart(state.drives, Level::Warning)};
    counts.removeAll(QString());
    parts.removeAll(QString());
    QString text = parts.join(QStringLiteral("; "));
    if (columns(text) > width)
        text.prepend(counts.join(QStringLiteral(", ")) + QStringLiteral("; "));
    return {text, levelTone(worst)};
}

/// Returns the progress and the findings of a drive's latest scan, with a bar where there is space for it.
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
    return {parts.join(QLatin1Char(' ')), scan->badRanges.isEmpty() ? Tone::Plain : Tone::Bad};
}

/// Returns `column` with cells of at least `width` columns, so that new values do not move the others.
client::Column<client::Drive> atLeast(int width, client::Column<client::Drive> column)
{
    const Align align = column.layout == Layout::Right ? Align::Right : Align::Left;
    column.cell = [width, align, column](const client::Drive &drive) {
        Cell cell = column.cellOfRow(drive);
        if (columns(cell.text) < width)
            cell.text = padded(cell.text, width, align);
        return cell;
    };
    return column;
}

client::Columns<client::Drive> watchColumns(const WatchState &state, int width)
{
    const bool isWide = width >= kWideScreen;
    const int scanWidth = isWide ? kWideScanWidth : width >= kUsualScreen ? kScanWidth : 0;
    const auto trend = [&state](const client::Drive &drive) {
        return Cell{sparkline(state.temperatures.value(drive.number), kTrendWidth, kTrendSpan)};
    };
    const auto scan = [&state, isWide](const client::Drive &drive) {
        return scanCell(state, drive.number, isWide);
    };
    client::Columns<client::Drive> columns{client::driveColumn("number"), client::driveColumn("model")};
    if (isWide)
        columns.append(client::driveColumn("serial"));
    columns += client::Columns<client::Drive>{
        client::driveColumn("capacityBytes"),
        atLeast(kTemperatureWidth, client::driveColumn("temperatureCelsius")),
        atLeast(kTrendWidth, client::cells<client::Drive>("Trend", Layout::Shrinking, trend)),
        client::driveColumn("healthPercent"),
        atLeast(kLevelWidth, client::driveColumn("level")),
        atLeast(scanWidth, client::cells<client::Drive>("Scan", Layout::Shrinking, scan)),
    };
    return columns;
}

/// Returns the heading and `count` drives. All drives are laid out, so that scrolling does not move columns.
QStringList driveLines(const WatchState &state, int first, int count, const Style &style)
{
    const QStringList lines = tableLines(watchColumns(state, style.width), state.drives, style);
    return lines.mid(0, 1) + lines.mid(1 + first, count);
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
        text += QStringLiteral(", %1").arg(client::timeText(state.answered));
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
    const Cell alertCell = alert(state, style.width);
    QStringList lines{painted(cut(title(state), style.width), Tone::Strong, style),
                      painted(cut(alertCell.text, style.width), alertCell.tone, style), QString()};
    if (count > 0)
        lines += driveLines(state, first, shown, style);
    lines.append(painted(cut(footer(state, first, shown), style.width), Tone::Dim, style));
    return lines.mid(0, rows);
}

} // namespace render
