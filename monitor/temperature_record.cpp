// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_record.h"

#include <QtEndian>

namespace {

constexpr int kFirstYear = 2000;
constexpr int kOffset = 33; ///< makes ordinary values printable

/// Returns the value that byte `index` of a record stores; the first byte is the most significant one.
int storedValue(quint64 record, int index)
{
    return int(record >> (56 - 8 * index) & 0xFF) - kOffset;
}

bool isAscii(quint64 record)
{
    return (record & 0x8080808080808080) == 0;
}

bool hasValidTime(quint64 record)
{
    return quint32(storedValue(record, 3)) < 24 && quint32(storedValue(record, 4)) < 60 &&
           quint32(storedValue(record, 5)) < 60;
}

QString textOf(const char *record)
{
    return QString::fromUtf8(record, temperature_record::kSize);
}

temperature_record::Stamp stampOfText(const QString &text)
{
    const auto value = [&text](int index) {
        return (index < text.size() ? text.at(index).unicode() : 0) - kOffset;
    };
    return temperature_record::stampOf(
        {QDate(kFirstYear + value(0), value(1), value(2)), QTime(value(3), value(4), value(5))});
}

} // namespace

namespace temperature_record {

Stamp stampOf(const DateAndTime &moment)
{
    if (!moment.date.isValid())
        return kNoDate;
    const QTime time = moment.time.isValid() ? moment.time : QTime(0, 0);
    const int year = moment.date.year() - kFirstYear + kOffset;
    auto stamp = Stamp(year);
    for (const int part :
         {moment.date.month(), moment.date.day(), time.hour(), time.minute(), time.second()}) {
        const int character = part + kOffset;
        stamp = stamp << 8 | Stamp(character);
    }
    return stamp;
}

Decoder::Record Decoder::decode(const char *record)
{
    const auto bytes = qFromBigEndian<quint64>(record);
    if (isAscii(bytes) && hasValidTime(bytes) && isValidDate(bytes >> 40))
        return {bytes >> 16, true};
    return {stampOfText(textOf(record)), isAscii(bytes)};
}

bool Decoder::isValidDate(quint64 dateBytes)
{
    if (dateBytes == m_validDate)
        return true;
    const quint64 record = dateBytes << 40;
    if (!QDate::isValid(kFirstYear + storedValue(record, 0), storedValue(record, 1), storedValue(record, 2)))
        return false;
    m_validDate = dateBytes;
    return true;
}

QByteArray text(const char *record)
{
    return textOf(record).toUtf8();
}

} // namespace temperature_record
