// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/history.h"

#include "client/field_reader.h"

namespace client {

namespace {

constexpr int kRecordSize = 8;
constexpr int kBias = 33; ///< the character of a number is this far above it
constexpr int kHighestSingleByte = 127;

int valueAt(const QString &text, int position)
{
    return int(text.at(position).unicode()) - kBias;
}

std::optional<TemperatureRecord> recordAt(const QString &text, int position)
{
    const QDate date(2000 + valueAt(text, position), valueAt(text, position + 1),
                     valueAt(text, position + 2));
    const QTime time(valueAt(text, position + 3), valueAt(text, position + 4), valueAt(text, position + 5));
    TemperatureRecord record;
    record.drive = valueAt(text, position + 6);
    if (!date.isValid() || !time.isValid() || record.drive < 0)
        return std::nullopt;
    record.time = QDateTime(date, time, Qt::UTC);
    // In a log of another program a value above 94 degrees arrives as a replacement character.
    if (text.at(position + 7).unicode() <= kHighestSingleByte)
        record.temperature = valueAt(text, position + 7);
    return record;
}

} // namespace

std::optional<TemperatureHistory> parseHistory(const QString &reply)
{
    const auto payload = afterPrefix(reply, QStringLiteral("STATD]!["));
    if (!payload || payload->size() % kRecordSize != 0)
        return std::nullopt;
    TemperatureHistory history;
    history.records.reserve(payload->size() / kRecordSize);
    for (int position = 0; position < payload->size(); position += kRecordSize) {
        if (const auto record = recordAt(*payload, position))
            history.records.append(*record);
        else
            ++history.damaged;
    }
    return history;
}

} // namespace client
