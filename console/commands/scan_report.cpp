// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/scan_report.h"

#include "console/client/failure.h"
#include "console/commands/json.h"
#include "console/render/bars.h"
#include "console/render/text.h"
#include "console/render/units.h"

#include <QJsonObject>

namespace {

using client::ScanState;

constexpr int kBarWidth = 20;
constexpr int kMargin = 4;
constexpr int kShownRanges = 8; // a dying drive has thousands; --json gives them all

quint64 sectorsOf(const ScanReport &report)
{
    return report.drive.capacity / client::kScanSectorBytes;
}

QString progressLine(const ScanReport &report, const render::Style &style)
{
    const client::ScanStatus &status = report.status;
    QStringList parts{scanStateText(status)};
    if (status.state != ScanState::Failed) {
        QString percent = QStringLiteral("%1 %").arg(status.percent);
        if (style.hasGraphics)
            percent.prepend(render::progressBar(status.percent / 100.0, kBarWidth) + QLatin1Char(' '));
        parts.append(percent);
    }
    if (report.bytesPerSecond) {
        parts.append(render::rateText(*report.bytesPerSecond));
        if (const auto left = secondsLeft(status, sectorsOf(report), *report.bytesPerSecond))
            parts.append(render::durationText(*left) + QStringLiteral(" left"));
    }
    if (status.time.isValid()) {
        const bool isRunning = status.state == ScanState::Running;
        parts.append((isRunning ? QStringLiteral("since ") : QStringLiteral("ended ")) +
                     render::timeText(status.time));
    }
    return parts.join(QStringLiteral(", "));
}

QString rangesLine(const QVector<client::BadRange> &ranges)
{
    QStringList texts;
    for (const client::BadRange &range : ranges.mid(0, kShownRanges))
        texts.append(QStringLiteral("%1-%2").arg(range.first).arg(range.last));
    if (ranges.size() > kShownRanges)
        texts.append(QStringLiteral("and %1 more").arg(ranges.size() - kShownRanges));
    return QStringLiteral("bad sectors: ") + texts.join(QStringLiteral(", "));
}

} // namespace

QString scanStateText(const client::ScanStatus &status)
{
    switch (status.state) {
    case ScanState::Running:
        return QStringLiteral("running");
    case ScanState::Failed:
        return QStringLiteral("failed: the drive could not be opened");
    case ScanState::Idle:
        break;
    }
    if (!status.hasRun())
        return QStringLiteral("never scanned");
    return status.percent == 100 ? QStringLiteral("done") : QStringLiteral("stopped");
}

QStringList scanLines(const QVector<ScanReport> &reports, const render::Style &style)
{
    const QString indent(kMargin, QLatin1Char(' '));
    const int room = style.width > kMargin ? style.width - kMargin : 0;
    QStringList lines;
    bool hasMap = false;
    for (const ScanReport &report : reports) {
        const QString name =
            QStringLiteral("%1  %2, %3")
                .arg(QString::number(report.status.drive), client::visible(report.drive.model),
                     render::sizeText(report.drive.capacity));
        if (!report.status.hasRun()) { // one line is enough
            lines.append(
                render::cut(name + QStringLiteral(": ") + scanStateText(report.status), style.width));
            continue;
        }
        lines.append(painted(render::cut(name, style.width), render::Colour::Strong, style));
        lines.append(indent + render::cut(progressLine(report, style), room));
        if (style.hasGraphics) {
            lines.append(indent + render::surfaceMap(report.status, sectorsOf(report), room, style));
            hasMap = true;
        }
        if (!report.status.badRanges.isEmpty())
            lines.append(indent + render::cut(rangesLine(report.status.badRanges), room));
    }
    if (hasMap)
        lines.append(indent + render::surfaceLegend(style));
    return lines;
}

QJsonArray scanArray(const QVector<ScanReport> &reports)
{
    QJsonArray array;
    for (const ScanReport &report : reports) {
        const client::ScanStatus &status = report.status;
        QJsonArray ranges;
        for (const client::BadRange &range : status.badRanges)
            ranges.append(QJsonArray{json::number(range.first), json::number(range.last)});
        const bool isRunning = status.state == ScanState::Running;
        QJsonObject object{
            {QStringLiteral("drive"), status.drive},
            {QStringLiteral("running"), isRunning},
            {QStringLiteral("failed"), status.state == ScanState::Failed},
            {QStringLiteral("badSectors"), ranges},
        };
        if (status.hasRun()) {
            object.insert(QStringLiteral("percent"), status.percent);
            object.insert(QStringLiteral("firstSector"), json::number(status.firstSector));
            object.insert(QStringLiteral("currentSector"), json::number(status.currentSector));
            object.insert(isRunning ? QStringLiteral("started") : QStringLiteral("ended"),
                          render::isoTime(status.time));
        }
        array.append(object);
    }
    return array;
}
