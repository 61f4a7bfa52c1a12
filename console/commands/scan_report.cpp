// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/scan_report.h"

#include "client/columns.h"
#include "client/failure.h"
#include "client/units.h"
#include "console/render/bars.h"
#include "console/render/text.h"
#include "console/scan_progress.h"

#include <algorithm>

namespace {

using client::ScanState;
using client::Tone;

constexpr int kBarWidth = 20;
constexpr int kMargin = 4;
constexpr int kUsualWidth = 80;
constexpr int kShownRanges = 32; // on a terminal: a failing drive has thousands

quint64 sectorsOf(const ScanReport &report)
{
    return report.drive.capacity / quint64(kScanSectorSize);
}

/// Returns the range that was read so far; the end of the range is not known.
QString sectorsText(const client::ScanStatus &status)
{
    return QStringLiteral("sectors %1 to %2").arg(status.firstSector).arg(status.currentSector);
}

QString progressText(const ScanReport &report, const render::Style &style)
{
    const client::ScanStatus &status = report.status;
    if (status.state == ScanState::Failed)
        return QStringLiteral("failed: the drive could not be opened");
    QString percent = QStringLiteral("%1 %").arg(status.isComplete() ? 100 : status.percent);
    if (style.hasGraphics)
        percent.prepend(render::progressBar(status.percent / 100.0, kBarWidth) + QLatin1Char(' '));
    const bool isPart = status.firstSector > 0 || status.currentSector + 1 < sectorsOf(report);
    if (status.isComplete() && isPart)
        percent += QStringLiteral(" of a part of the drive");
    QStringList parts{scanStateName(status), percent};
    if (report.bytesPerSecond) {
        parts.append(client::rateText(*report.bytesPerSecond));
        if (const auto left = secondsLeft(status, sectorsOf(report), *report.bytesPerSecond))
            parts.append(client::durationText(*left) + QStringLiteral(" left"));
    }
    return parts.join(QStringLiteral(", "));
}

QString timeAndSectors(const client::ScanStatus &status)
{
    const bool isRunning = status.state == ScanState::Running;
    const QString sectors = sectorsText(status);
    if (!status.time.isValid())
        return sectors;
    return sectors + (isRunning ? QStringLiteral(", since ") : QStringLiteral(", ended ")) +
           client::timeText(status.time);
}

/// Returns `head` and the items in lines of at most `width` columns; 0 is no limit.
QStringList itemLines(const QString &head, const QStringList &items, int width)
{
    QStringList lines{head};
    for (const QString &item : items) {
        if (width > 0 && lines.last().size() + 1 + item.size() > width)
            lines.append(QStringLiteral(" "));
        lines.last() += QLatin1Char(' ') + item;
    }
    return lines;
}

QStringList rangeLines(const QVector<client::SectorRange> &ranges, int width, bool isTerminal)
{
    const int shown = isTerminal ? kShownRanges : int(ranges.size());
    QStringList items;
    for (const client::SectorRange &range : ranges.mid(0, shown))
        items.append(QStringLiteral("%1-%2").arg(range.first).arg(range.last));
    if (ranges.size() > shown)
        items.append(QStringLiteral("and %1 more (--json prints all)").arg(ranges.size() - shown));
    return itemLines(QStringLiteral("bad sectors:"), items, width);
}

QString driveText(const client::Drive &drive)
{
    return QStringLiteral("%1  %2, %3")
        .arg(QString::number(drive.number), client::visible(drive.model), client::sizeText(drive.capacity));
}

QStringList scanBlock(const ScanReport &report, const render::Style &style)
{
    const QString indent(kMargin, QLatin1Char(' '));
    const int room = style.width > kMargin ? style.width - kMargin : 0;
    QStringList lines{progressText(report, style), timeAndSectors(report.status)};
    if (!report.status.badRanges.isEmpty())
        lines += rangeLines(report.status.badRanges, room > 0 ? room : kUsualWidth, style.hasGraphics);
    for (QString &line : lines)
        line = indent + render::cut(line, room);
    lines.prepend(painted(render::cut(driveText(report.drive), style.width), Tone::Strong, style));
    if (style.hasGraphics)
        lines.insert(3, indent + render::surfaceMap(report.status, sectorsOf(report), room, style));
    return lines;
}

QStringList neverScannedLines(const QVector<ScanReport> &reports, int width)
{
    if (reports.size() == 1)
        return {render::cut(driveText(reports.first().drive) + QStringLiteral(": never scanned"), width)};
    QStringList numbers;
    for (const ScanReport &report : reports)
        numbers.append(QStringLiteral("%1,").arg(report.drive.number));
    numbers.last().chop(1);
    return itemLines(QStringLiteral("never scanned: drives"), numbers, width);
}

} // namespace

QStringList scanLines(QVector<ScanReport> reports, const render::Style &style, bool isFollowing)
{
    const auto firstIdle =
        std::stable_partition(reports.begin(), reports.end(), [isFollowing](const ScanReport &report) {
            return isFollowing && report.status.state == ScanState::Running;
        });
    const auto firstNew = std::stable_partition(
        firstIdle, reports.end(), [](const ScanReport &report) { return report.status.hasRun(); });
    QStringList lines;
    for (auto report = reports.begin(); report != firstNew; ++report)
        lines += scanBlock(*report, style);
    if (style.hasGraphics && firstNew != reports.begin())
        lines.append(QString(kMargin, QLatin1Char(' ')) + render::surfaceLegend(style));
    const QVector<ScanReport> neverScanned(firstNew, reports.end());
    if (!neverScanned.isEmpty() && (!isFollowing || lines.isEmpty()))
        lines += neverScannedLines(neverScanned, style.width);
    return lines;
}
