// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QString>
#include <QVector>

#include <optional>

namespace client {

struct TemperatureRecord
{
    QDateTime time; ///< the service's local time, held as if it were UTC
    qint32 drive = 0;
    std::optional<qint32> temperature; ///< degrees Celsius; nothing if its character was lost in transit
};

struct TemperatureHistory
{
    QVector<TemperatureRecord> records; ///< in the order in which they were written
    int damaged = 0;                    ///< records without a valid time, which are left out
};

/// A reply whose length is not a multiple of a record's does not fit: none of its records can be trusted.
[[nodiscard]] std::optional<TemperatureHistory> parseHistory(const QString &reply);

} // namespace client
