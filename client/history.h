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
    QDateTime time; ///< by the service's local clock
    qint32 drive = 0;
    std::optional<qint32> temperature; ///< degrees Celsius; nothing when the character was lost on the way
};

struct TemperatureHistory
{
    QVector<TemperatureRecord> records; ///< in the order in which they were written
    int damaged = 0;                    ///< records that hold no moment, left out
};

/// A reply whose length is no multiple of a record's does not fit: no record in it could be trusted.
[[nodiscard]] std::optional<TemperatureHistory> parseHistory(const QString &reply);

} // namespace client
