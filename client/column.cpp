// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/column.h"

#include "client/failure.h"

namespace client {

namespace {

/// Returns the text of a text, number or boolean, without control characters; empty for any other value.
QString plainText(const QJsonValue &value)
{
    if (value.isBool())
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    if (value.isDouble())
        return QString::number(value.toDouble(), 'g', 17);
    return visible(value.toString());
}

QString csvField(QString text)
{
    if (!text.contains(QLatin1Char(',')) && !text.contains(QLatin1Char('"')))
        return text;
    return QLatin1Char('"') + text.replace(QLatin1Char('"'), QStringLiteral("\"\"")) + QLatin1Char('"');
}

} // namespace

Cell cellOf(const QJsonValue &value)
{
    if (value.isNull() || value.isUndefined())
        return {QStringLiteral("-"), Tone::Dim};
    if (value.isBool())
        return {value.toBool() ? QStringLiteral("yes") : QStringLiteral("no")};
    return {plainText(value)};
}

QString csvLine(const QJsonArray &values)
{
    QStringList fields;
    for (const auto &value : values)
        fields.append(csvField(plainText(value)));
    return fields.join(QLatin1Char(','));
}

QJsonValue toJson(quint64 value)
{
    constexpr quint64 kLargestExact = quint64(1) << 53;
    if (value > kLargestExact)
        return QString::number(value);
    return double(value);
}

} // namespace client
