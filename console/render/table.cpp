// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/table.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace render {

namespace {

constexpr int kGap = 2;           ///< blanks between columns
constexpr int kSmallestWidth = 6; ///< of a column that shrinks

QString withoutTrailingBlanks(QString line)
{
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line;
}

} // namespace

void Table::addColumn(const QString &heading, Align align, Shrink shrink)
{
    m_columns.append({heading, align, shrink == Shrink::Yes});
}

void Table::addRow(QVector<Cell> cells)
{
    cells.resize(m_columns.size());
    m_rows.append(std::move(cells));
}

QVector<int> Table::widths(int available) const
{
    QVector<int> widths;
    for (int i = 0; i < m_columns.size(); ++i) {
        int width = columns(m_columns.at(i).heading);
        for (const QVector<Cell> &row : m_rows)
            width = std::max(width, columns(row.at(i).text));
        widths.append(width);
    }
    int excess = std::accumulate(widths.cbegin(), widths.cend(), kGap * (int(widths.size()) - 1)) - available;
    while (available > 0 && excess > 0) {
        int widest = -1;
        for (int i = 0; i < widths.size(); ++i) {
            const bool canShrink = m_columns.at(i).mayShrink && widths.at(i) > kSmallestWidth;
            if (canShrink && (widest < 0 || widths.at(i) > widths.at(widest)))
                widest = i;
        }
        if (widest < 0)
            break;
        --widths[widest];
        --excess;
    }
    return widths;
}

QStringList Table::lines(const Style &style) const
{
    const QVector<int> widths = this->widths(style.width);
    const QString gap(kGap, QLatin1Char(' '));
    QStringList cells;
    for (int i = 0; i < m_columns.size(); ++i)
        cells.append(padded(m_columns.at(i).heading, widths.at(i), m_columns.at(i).align));
    QStringList result{painted(withoutTrailingBlanks(cells.join(gap)), Colour::Strong, style)};
    for (const QVector<Cell> &row : m_rows) {
        cells.clear();
        for (int i = 0; i < m_columns.size(); ++i) {
            const QString text = padded(row.at(i).text, widths.at(i), m_columns.at(i).align);
            cells.append(painted(text, row.at(i).colour, style));
        }
        result.append(withoutTrailingBlanks(cells.join(gap)));
    }
    return result;
}

QStringList pairLines(const QVector<QPair<QString, QString>> &pairs, const Style &style)
{
    int width = 0;
    for (const auto &pair : pairs)
        width = std::max(width, columns(pair.first));
    QStringList lines;
    for (const auto &pair : pairs)
        lines.append(painted(padded(pair.first, width), Colour::Dim, style) + QStringLiteral("  ") +
                     pair.second);
    return lines;
}

} // namespace render
