// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/date_time_text.h"

DateAndTime parseDateTime(const QString &text)
{
    const auto pair = [&text](int index) { return text.midRef(2 * index, 2).toInt(); };
    return {QDate(2000 + pair(0), pair(1), pair(2)), QTime(pair(3), pair(4), pair(5))};
}
