// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/render/style.h"
#include "console/render/text.h"

#include <QStringList>
#include <QVector>

namespace render {

struct Cell
{
    QString text;
    Colour colour = Colour::Plain;
};

/// Rows under a heading. Columns are as wide as what they hold; when they do not fit into the style's
/// width, those that may shrink do.
class Table
{
public:
    enum class Shrink { No, Yes };

    void addColumn(const QString &heading, Align align = Align::Left, Shrink shrink = Shrink::No);
    /// As many cells as there are columns; missing ones are empty.
    void addRow(QVector<Cell> cells);

    [[nodiscard]] QStringList lines(const Style &style) const;

private:
    struct Column
    {
        QString heading;
        Align align = Align::Left;
        bool mayShrink = false;
    };

    [[nodiscard]] QVector<int> widths(int available) const;

    QVector<Column> m_columns;
    QVector<QVector<Cell>> m_rows;
};

/// Names and values, one pair a line, the values one below the other.
[[nodiscard]] QStringList pairLines(const QVector<QPair<QString, QString>> &pairs, const Style &style);

} // namespace render
