// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/field_reader.h"

namespace client {

namespace {

constexpr int kMomentPairs = 6;
constexpr int kCentury = 2000;

} // namespace

QVector<int> digitPairs(const QString &digits, int pairs)
{
    if (digits.size() != 2 * pairs)
        return {};
    QVector<int> numbers;
    for (int i = 0; i < pairs; ++i) {
        const QChar tens = digits.at(2 * i);
        const QChar ones = digits.at(2 * i + 1);
        if (tens < u'0' || tens > u'9' || ones < u'0' || ones > u'9')
            return {};
        numbers.append(10 * tens.digitValue() + ones.digitValue());
    }
    return numbers;
}

std::optional<QDateTime> parseMoment(const QString &digits)
{
    const QVector<int> pairs = digitPairs(digits, kMomentPairs);
    if (pairs.isEmpty())
        return std::nullopt;
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
