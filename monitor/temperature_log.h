// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QString>

/// The temperature log: a flat row of 8-byte records, oldest first, that only ever grows. A record is local
/// date and time (year - 2000, month, day, hour, minute, second), drive index and degrees Celsius, a byte
/// each, 33 added. Records are added on one thread; a history may be read on any other meanwhile.

/// The temperature of one drive.
struct TemperatureReading
{
    int device = 0; ///< place in the device list
    qint32 celsius = 0;
};

/// Where the log lies. `directory` ends with a separator, of either kind.
[[nodiscard]] QString temperatureLogIn(const QString &directory);

/// Adds one record at the end. What the local code page has no single byte for is written as "?". The rest
/// of a record that a crash or a full disk cut short is removed first, because everything behind it would be
/// read in the wrong places. A file that cannot be opened, or a path that is not absolute, loses the record.
void appendTemperature(const QString &path, const TemperatureReading &reading, const QDateTime &now);

/// The records from `from` to `to` (twelve digits each, see parseDateTime()) as text, and the first one after
/// `to`, where reading stops. Empty when the file cannot be opened or the path is not absolute. Reading stops
/// at about 128 MiB, too: no console waits for 16 million records.
///
/// Moments compare as the local clock showed them, without daylight saving. An invalid date, in a record as
/// in `from` or `to`, comes before every valid one; an invalid time of day counts as midnight.
[[nodiscard]] QString temperatureHistory(const QString &path, const QString &from, const QString &to);
