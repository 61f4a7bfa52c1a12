// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/numbers.h"

#include <QDateTime>
#include <QStringList>
#include <QVector>

#include <limits>
#include <optional>
#include <utility>

namespace client {

/// Reads the fields of a reply in order, never beyond the last, and records whether one did not fit. After
/// that the values that were read have no meaning.
class FieldReader
{
public:
    explicit FieldReader(QStringList fields)
        : m_fields(std::move(fields))
    {}

    QString text()
    {
        if (m_next < m_fields.size())
            return m_fields.at(m_next++);
        m_isDamaged = true;
        return {};
    }

    template <typename Number>
    Number number(Number lowest = std::numeric_limits<Number>::min(),
                  Number highest = std::numeric_limits<Number>::max())
    {
        const auto number = strictNumber<Number>(text());
        if (number && *number >= lowest && *number <= highest)
            return *number;
        m_isDamaged = true;
        return {};
    }

    bool flag() { return number<qint32>(0, 1) == 1; }

    /// Reads twelve digits yyMMddhhmmss; an empty field is an invalid time.
    QDateTime moment();

    void fail() { m_isDamaged = true; }

    [[nodiscard]] bool isAtEnd() const { return m_next >= m_fields.size(); }

    /// Returns whether every field was read and each one fitted.
    [[nodiscard]] bool fits() const { return !m_isDamaged && isAtEnd(); }

private:
    QStringList m_fields;
    int m_next = 0;
    bool m_isDamaged = false;
};

/// Returns the numbers of `pairs` pairs of digits, or nothing if `digits` is something else.
[[nodiscard]] QVector<int> digitPairs(const QString &digits, int pairs);

/// Parses twelve digits yyMMddhhmmss, years from 2000: a local time of the service. It is held as if it were
/// UTC, so that the time zone of this machine cannot change it; see withZone().
[[nodiscard]] std::optional<QDateTime> parseMoment(const QString &digits);

/// Formats a local time of the service for a request.
[[nodiscard]] QString formatMoment(const QDateTime &moment);

/// Returns the part of `reply` after `prefix`, or nothing if the reply begins otherwise.
[[nodiscard]] std::optional<QString> afterPrefix(const QString &reply, const QString &prefix);

/// Returns the items, each read by `parse`, or nothing if one of them does not fit.
template <typename Parse>
[[nodiscard]] auto parseItems(const QStringList &items, Parse parse)
    -> std::optional<QVector<typename decltype(parse(QString()))::value_type>>
{
    QVector<typename decltype(parse(QString()))::value_type> values;
    values.reserve(items.size());
    for (const QString &item : items) {
        auto value = parse(item);
        if (!value)
            return std::nullopt;
        values.append(*std::move(value));
    }
    return values;
}

} // namespace client
