// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/column.h"
#include "console/render/style.h"

#include <QStringList>
#include <QVector>

#include <algorithm>

namespace render {

struct Heading
{
    QString text;
    client::Layout layout = client::Layout::Left;
};

/// Returns the rows under their headings. Columns are as wide as their content; if they do not fit into the
/// style's width, the shrinking ones are cut. A row has a cell for each heading.
[[nodiscard]] QStringList tableLines(const QVector<Heading> &headings,
                                     const QVector<QVector<client::Cell>> &rows, const Style &style);

/// As above, with the columns that have a heading and a cell that is not empty.
template <typename Row>
[[nodiscard]] QStringList tableLines(const client::Columns<Row> &columns, const QVector<Row> &rows,
                                     const Style &style)
{
    QVector<Heading> headings;
    QVector<QVector<client::Cell>> cells(rows.size());
    for (const client::Column<Row> &column : columns) {
        if (column.heading.isEmpty())
            continue;
        QVector<client::Cell> texts;
        for (const Row &row : rows)
            texts.append(column.cellOfRow(row));
        if (std::all_of(texts.cbegin(), texts.cend(), [](const auto &cell) { return cell.text.isEmpty(); }))
            continue;
        headings.append({column.heading, column.layout});
        for (int i = 0; i < rows.size(); ++i)
            cells[i].append(texts.at(i));
    }
    return tableLines(headings, cells, style);
}

/// Returns names and values, one pair per line.
[[nodiscard]] QStringList pairLines(const QVector<QPair<QString, client::Cell>> &pairs, const Style &style);

} // namespace render
