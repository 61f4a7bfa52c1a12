// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/numbers.h"

#include <QDateTime>
#include <QStringList>

#include <limits>

namespace client {

/// Reads the fields of a reply one after the other, never beyond the last, and remembers whether one did
/// not fit. After a field that does not fit the values read mean nothing.
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

    /// Twelve digits yyMMddhhmmss, or nothing for a moment that was never set: an invalid value.
    QDateTime moment();

    void fail() { m_isDamaged = true; }

    [[nodiscard]] bool isAtEnd() const { return m_next >= m_fields.size(); }

    /// True when every field was read and each one fitted.
    [[nodiscard]] bool fits() const { return !m_isDamaged && isAtEnd(); }

private:
    QStringList m_fields;
    int m_next = 0;
    bool m_isDamaged = false;
};

/// The local time that twelve digits yyMMddhhmmss write, years from 2000; nothing when they do not.
[[nodiscard]] std::optional<QDateTime> parseMoment(const QString &digits);

/// The digits of `moment`, for a request.
[[nodiscard]] QString formatMoment(const QDateTime &moment);

/// What follows `prefix` in `reply`; nothing when the reply begins otherwise.
[[nodiscard]] std::optional<QString> afterPrefix(const QString &reply, const QString &prefix);

} // namespace client
