// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/field_reader.h"

namespace client {

namespace {

constexpr int kMomentDigits = 12;
constexpr int kCentury = 2000;

} // namespace

std::optional<QDateTime> parseMoment(const QString &digits)
{
    if (digits.size() != kMomentDigits)
        return std::nullopt;
    int pairs[kMomentDigits / 2] = {};
    for (int i = 0; i < kMomentDigits; ++i) {
        const QChar digit = digits.at(i);
        if (digit < QLatin1Char('0') || digit > QLatin1Char('9'))
            return std::nullopt;
        pairs[i / 2] = pairs[i / 2] * 10 + digit.digitValue();
    }
    const QDate date(kCentury + pairs[0], pairs[1], pairs[2]);
    const QTime time(pairs[3], pairs[4], pairs[5]);
    if (!date.isValid() || !time.isValid())
        return std::nullopt;
    return QDateTime(date, time, Qt::UTC);
}

QString formatMoment(const QDateTime &moment)
{
    return moment.toString(QStringLiteral("yyMMddHHmmss"));
}

std::optional<QString> afterPrefix(const QString &reply, const QString &prefix)
{
    if (!reply.startsWith(prefix))
        return std::nullopt;
    return reply.mid(prefix.size());
}

QDateTime FieldReader::moment()
{
    const QString digits = text();
    if (digits.isEmpty())
        return {};
    const auto moment = parseMoment(digits);
    if (!moment)
        m_isDamaged = true;
    return moment.value_or(QDateTime());
}

} // namespace client
