// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QStringList>
#include <QVector>

#include <functional>
#include <optional>
#include <utility>

namespace client {

/// The meaning of a cell's colour. A program without colours ignores it.
enum class Tone { Plain, Good, Warning, Bad, Dim, Strong };

struct Cell
{
    QString text;
    Tone tone = Tone::Plain;
};

enum class Layout {
    Left,
    Right,
    Shrinking, ///< left-aligned; cut where the table is wider than the screen
};

/// Returns the text of `value` in a table: "-" for null, "yes" and "no" for booleans, and no control
/// characters.
[[nodiscard]] Cell cellOf(const QJsonValue &value);

/// Returns a number while a reader that holds numbers as doubles keeps it exactly, else a text.
[[nodiscard]] QJsonValue toJson(quint64 value);
[[nodiscard]] inline QJsonValue toJson(quint32 value)
{
    return double(value);
}
template <typename Value>
[[nodiscard]] QJsonValue toJson(const Value &value)
{
    return value;
}
/// Returns null for an empty optional.
template <typename Value>
[[nodiscard]] QJsonValue toJson(const std::optional<Value> &value)
{
    return value ? QJsonValue(*value) : QJsonValue();
}

/// One property of a `Row`. A list of columns is the only description of a reply's values: its JSON object,
/// its CSV record and its table follow from it.
template <typename Row>
struct Column
{
    QString key;     ///< in JSON and CSV; empty for a column of tables alone
    QString heading; ///< in tables; empty for a column of documents alone
    Layout layout = Layout::Left;
    /// Null where the value is unknown, undefined where the object has no such key.
    std::function<QJsonValue(const Row &)> value;
    /// Without a function, tables show `value`.
    std::function<Cell(const Row &)> cell;

    [[nodiscard]] Cell cellOfRow(const Row &row) const { return cell ? cell(row) : cellOf(value(row)); }
};

template <typename Row>
using Columns = QVector<Column<Row>>;

/// Returns a column of documents and tables. `value` is a member of `Row`, a member function or a function of
/// a row; its result needs a toJson().
template <typename Row, typename Value>
[[nodiscard]] Column<Row> column(const char *key, const char *heading, Layout layout, Value value,
                                 std::function<Cell(const Row &)> cell = {})
{
    return {QString::fromUtf8(key), QString::fromUtf8(heading), layout,
            [value](const Row &row) { return toJson(std::invoke(value, row)); }, std::move(cell)};
}

/// Returns a column of documents alone.
template <typename Row, typename Value>
[[nodiscard]] Column<Row> field(const char *key, Value value)
{
    return column<Row>(key, "", Layout::Left, value);
}

/// Returns a column of tables alone.
template <typename Row>
[[nodiscard]] Column<Row> cells(const char *heading, Layout layout, std::function<Cell(const Row &)> cell)
{
    return {{}, QString::fromUtf8(heading), layout, {}, std::move(cell)};
}

template <typename Row>
[[nodiscard]] QJsonObject toObject(const Columns<Row> &columns, const Row &row)
{
    QJsonObject object;
    for (const Column<Row> &column : columns) {
        if (!column.key.isEmpty())
            object.insert(column.key, column.value(row));
    }
    return object;
}

template <typename Row>
[[nodiscard]] QJsonArray toArray(const Columns<Row> &columns, const QVector<Row> &rows)
{
    QJsonArray array;
    for (const Row &row : rows)
        array.append(toObject(columns, row));
    return array;
}

/// Returns one CSV line (RFC 4180, without a line end). Nulls are empty fields, and so are arrays.
[[nodiscard]] QString csvLine(const QJsonArray &values);

/// Returns a header of the keys, then a line for each row.
template <typename Row>
[[nodiscard]] QStringList toCsv(const Columns<Row> &columns, const QVector<Row> &rows)
{
    QJsonArray keys;
    for (const Column<Row> &column : columns) {
        if (!column.key.isEmpty())
            keys.append(column.key);
    }
    QStringList lines{csvLine(keys)};
    for (const Row &row : rows) {
        const QJsonObject object = toObject(columns, row);
        QJsonArray values;
        for (const auto &key : std::as_const(keys))
            values.append(object.value(key.toString()));
        lines.append(csvLine(values));
    }
    return lines;
}

} // namespace client
