// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/table.h"

#include "console/render/text.h"

#include <algorithm>
#include <numeric>

namespace render {

namespace {

constexpr int kGap = 2;           ///< blanks between columns
constexpr int kSmallestWidth = 6; ///< of a shrinking column

using Row = QVector<client::Cell>;

QString withoutTrailingBlanks(QString line)
{
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line;
}

/// Returns the index of the widest column that can be cut further, or -1.
int widestShrinking(const QVector<Heading> &headings, const QVector<int> &widths)
{
    int widest = -1;
    for (int i = 0; i < widths.size(); ++i) {
        const bool canShrink =
            headings.at(i).layout == client::Layout::Shrinking && widths.at(i) > kSmallestWidth;
        if (canShrink && (widest < 0 || widths.at(i) > widths.at(widest)))
            widest = i;
    }
    return widest;
}

QVector<int> columnWidths(const QVector<Heading> &headings, const QVector<Row> &rows, int available)
{
    QVector<int> widths;
    for (int i = 0; i < headings.size(); ++i) {
        int width = columns(headings.at(i).text);
        for (const Row &row : rows)
            width = std::max(width, columns(row.at(i).text));
        widths.append(width);
    }
    int excess = std::accumulate(widths.cbegin(), widths.cend(), kGap * (int(widths.size()) - 1)) - available;
    for (; available > 0 && excess > 0; --excess) {
        const int widest = widestShrinking(headings, widths);
        if (widest < 0)
            break;
        --widths[widest];
    }
    return widths;
}

QString fitted(const QString &text, int width, client::Layout layout)
{
    if (layout == client::Layout::Right)
        return padded(text, width, Align::Right);
    return padded(withoutTrailingBlanks(text), width); // blanks alone are not worth an ellipsis
}

} // namespace

QStringList tableLines(const QVector<Heading> &headings, const QVector<Row> &rows, const Style &style)
{
    const QVector<int> widths = columnWidths(headings, rows, style.width);
    const QString gap(kGap, QLatin1Char(' '));
    QStringList texts;
    for (int i = 0; i < headings.size(); ++i)
        texts.append(fitted(headings.at(i).text, widths.at(i), headings.at(i).layout));
    QStringList result{painted(withoutTrailingBlanks(texts.join(gap)), client::Tone::Strong, style)};
    for (const Row &row : rows) {
        texts.clear();
        for (int i = 0; i < headings.size(); ++i) {
            const QString text = fitted(row.at(i).text, widths.at(i), headings.at(i).layout);
            texts.append(painted(text, row.at(i).tone, style));
        }
        result.append(withoutTrailingBlanks(texts.join(gap)));
    }
    return result;
}

QStringList pairLines(const QVector<QPair<QString, client::Cell>> &pairs, const Style &style)
{
    int width = 0;
    for (const auto &pair : pairs)
        width = std::max(width, columns(pair.first));
    QStringList lines;
    for (const auto &pair : pairs)
        lines.append(painted(padded(pair.first, width), client::Tone::Dim, style) + QStringLiteral("  ") +
                     painted(pair.second.text, pair.second.tone, style));
    return lines;
}

} // namespace render
