// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/bars.h"

#include <algorithm>
#include <cmath>

namespace render {

namespace {

constexpr int kEighths = 8;
const QString kLeftBlocks = QStringLiteral(" ▏▎▍▌▋▊▉█");
const QString kLowerBlocks = QStringLiteral(" ▁▂▃▄▅▆▇█");

enum class SurfaceCell { NotRead, Read, Bad };

QString cellText(SurfaceCell cell, const Style &style)
{
    switch (cell) {
    case SurfaceCell::NotRead:
        return painted(QStringLiteral("░"), client::Tone::Dim, style);
    case SurfaceCell::Read:
        return painted(QStringLiteral("█"), client::Tone::Good, style);
    case SurfaceCell::Bad:
        return painted(QStringLiteral("▚"), client::Tone::Bad, style);
    }
    return {};
}

/// Returns the cell of a sector. In floating point, because the products exceed 64 bits for large drives.
int cellOf(quint64 sector, quint64 sectors, int width)
{
    const double position = double(sector) / double(sectors) * width;
    return int(std::min(position, double(width - 1)));
}

} // namespace

QString progressBar(double fraction, int width)
{
    const double bounded = std::clamp(fraction, 0.0, 1.0);
    const int eighths = int(std::lround(bounded * width * kEighths));
    QString bar(eighths / kEighths, kLeftBlocks.at(kEighths));
    if (eighths % kEighths != 0)
        bar += kLeftBlocks.at(eighths % kEighths);
    return bar.leftJustified(width, QChar(0x2591)); // light shade
}

QString sparkline(const QVector<int> &values, int width, int smallestSpan)
{
    const QVector<int> shown = values.mid(std::max(0, int(values.size()) - width));
    if (shown.isEmpty())
        return {};
    const auto [lowest, highest] = std::minmax_element(shown.cbegin(), shown.cend());
    const int span = std::max(*highest - *lowest, smallestSpan);
    QString line;
    for (const int value : shown)
        line += kLowerBlocks.at(1 + (value - *lowest) * (kEighths - 1) / span);
    return line;
}

QString surfaceMap(const client::ScanStatus &status, quint64 sectors, int width, const Style &style)
{
    if (sectors == 0 || width <= 0)
        return {};
    QVector<SurfaceCell> cells(width, SurfaceCell::NotRead);
    if (status.hasRun()) {
        const int first = cellOf(status.firstSector, sectors, width);
        const int last = cellOf(status.currentSector, sectors, width);
        for (int i = first; i <= last; ++i)
            cells[i] = SurfaceCell::Read;
    }
    for (const client::SectorRange &range : status.badRanges) {
        for (int i = cellOf(range.first, sectors, width); i <= cellOf(range.last, sectors, width); ++i)
            cells[i] = SurfaceCell::Bad;
    }
    QString map;
    for (const SurfaceCell cell : cells)
        map += cellText(cell, style);
    return map;
}

QString surfaceLegend(const Style &style)
{
    return QStringLiteral("%1 read  %2 bad  %3 not read")
        .arg(cellText(SurfaceCell::Read, style), cellText(SurfaceCell::Bad, style),
             cellText(SurfaceCell::NotRead, style));
}

} // namespace render
