// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/date_time_text.h"

namespace {

constexpr int kInvalidPart = -1; // of an invalid date or time of day

} // namespace

DateAndTime parseDateTime(const QString &text)
{
    const auto pair = [&text](int index) {
        bool isNumber = false;
        const int number = text.midRef(2 * index, 2).toInt(&isNumber);
        return isNumber ? number : kInvalidPart;
    };
    const int year = pair(0);
    return {year == kInvalidPart ? QDate() : QDate(2000 + year, pair(1), pair(2)),
            QTime(pair(3), pair(4), pair(5))};
}
