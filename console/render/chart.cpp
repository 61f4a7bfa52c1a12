// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/chart.h"

#include "client/units.h"

#include <algorithm>
#include <optional>

namespace render {

namespace {

constexpr int kEighths = 8;
constexpr int kSmallestSpan = 4; ///< degrees, so that small changes look small
constexpr int kLabelWidth = 7;   ///< "  45 °C"
const QString kLowerBlocks = QStringLiteral(" ▁▂▃▄▅▆▇█");

struct Scale
{
    int lowest = 0;
    int highest = 0;

    /// Returns the height of a bar in eighths of a row; at least one, to differ from a gap.
    [[nodiscard]] int eighths(int value, int height) const
    {
        const int span = std::max(highest - lowest, 1);
        return 1 + (value - lowest) * (height * kEighths - 1) / span;
    }
};

using Columns = QVector<std::optional<int>>;

Columns spread(const QVector<client::TemperatureRecord> &records, int count)
{
    const qint64 start = records.first().time.toSecsSinceEpoch();
    const qint64 span = std::max<qint64>(1, records.last().time.toSecsSinceEpoch() - start);
    Columns columns(count);
    for (const client::TemperatureRecord &record : records) {
        const qint64 offset = record.time.toSecsSinceEpoch() - start;
        if (!record.temperature || offset < 0 || offset > span) // after the clock was set back
            continue;
        std::optional<int> &column = columns[int(offset * (count - 1) / span)];
        column = std::max(column.value_or(*record.temperature), *record.temperature);
    }
    return columns;
}

std::optional<Scale> scaleOf(const Columns &columns)
{
    std::optional<Scale> scale;
    for (const auto &column : columns) {
        if (!column)
            continue;
        if (!scale)
            scale = Scale{*column, *column};
        scale->lowest = std::min(scale->lowest, *column);
        scale->highest = std::max(scale->highest, *column);
    }
    if (scale)
        scale->lowest = std::min(scale->lowest, scale->highest - kSmallestSpan);
    return scale;
}

QString label(int row, int height, const Scale &scale)
{
    if (row != 0 && row != height - 1 && row != height / 2)
        return QString(kLabelWidth, QLatin1Char(' '));
    const int span = scale.highest - scale.lowest;
    const int value = row == height - 1 ? scale.lowest : scale.highest - span * row / (height - 1);
    return QStringLiteral("%1 °C").arg(value, kLabelWidth - 3);
}

QString axis(const QVector<client::TemperatureRecord> &records, int count)
{
    const QString start = client::timeText(records.first().time);
    const QString end = client::timeText(records.last().time);
    const int gap = std::max(1, count - int(start.size()) - int(end.size()));
    return QString(kLabelWidth + 1, QLatin1Char(' ')) + start + QString(gap, QLatin1Char(' ')) + end;
}

} // namespace

QStringList temperatureChart(const QVector<client::TemperatureRecord> &records, int width, int height)
{
    const int count = width - kLabelWidth - 1;
    if (records.isEmpty() || count < 2 || height < 2)
        return {};
    const Columns columns = spread(records, count);
    const auto scale = scaleOf(columns);
    if (!scale)
        return {};
    QStringList lines;
    for (int row = 0; row < height; ++row) {
        const int below = (height - 1 - row) * kEighths;
        QString line = label(row, height, *scale) + QLatin1Char(' ');
        for (const auto &column : columns) {
            const int eighths = column ? scale->eighths(*column, height) - below : 0;
            line += kLowerBlocks.at(std::clamp(eighths, 0, kEighths));
        }
        lines.append(line);
    }
    lines.append(axis(records, count));
    return lines;
}

} // namespace render
