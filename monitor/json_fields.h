// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QJsonObject>

/// Reading members of a JSON object that may be damaged: a member that is missing, or of another type, reads
/// as the default value.
namespace json_fields {

[[nodiscard]] inline QDateTime time(const QJsonObject &json, const char *name)
{
    return QDateTime::fromString(json.value(QLatin1String(name)).toString(), Qt::ISODate).toUTC();
}

/// Reads a whole number from 0 to 2^48 - 1, the range of a raw value.
[[nodiscard]] inline quint64 rawValue(const QJsonValue &value)
{
    constexpr double kHighest = 281474976710655.0;
    const double number = value.toDouble();
    return number >= 0 && number <= kHighest ? quint64(number) : 0;
}

} // namespace json_fields
