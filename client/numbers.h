// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <limits>
#include <optional>
#include <type_traits>

namespace client {

/// Returns whether `text` is a number as the protocol writes it: decimal, unpadded, without a plus sign.
[[nodiscard]] inline bool isPlainDecimal(const QString &text)
{
    const int start = text.startsWith(QLatin1Char('-')) ? 1 : 0;
    if (start == text.size())
        return false;
    for (int i = start; i < text.size(); ++i) {
        if (text.at(i) < QLatin1Char('0') || text.at(i) > QLatin1Char('9'))
            return false;
    }
    const bool isZero = text == QLatin1String("0");
    return isZero || text.at(start) != QLatin1Char('0');
}

/// Parses a number in that form. Returns nothing for another form or a number that does not fit `Number`.
template <typename Number>
[[nodiscard]] std::optional<Number> strictNumber(const QString &text)
{
    if (!isPlainDecimal(text))
        return std::nullopt;
    bool ok = false;
    if constexpr (std::is_unsigned_v<Number>) {
        const qulonglong number = text.toULongLong(&ok);
        if (!ok || number > std::numeric_limits<Number>::max())
            return std::nullopt;
        return Number(number);
    } else {
        const qlonglong number = text.toLongLong(&ok);
        if (!ok || number < std::numeric_limits<Number>::min() || number > std::numeric_limits<Number>::max())
            return std::nullopt;
        return Number(number);
    }
}

} // namespace client
