// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "wire/result.h"

#include <QDateTime>
#include <QString>
#include <QVector>

/// The temperature log: a flat sequence of 8-byte records, oldest first, that only ever grows. A record is
/// local date and time (year - 2000, month, day, hour, minute, second), drive index and degrees Celsius, a
/// byte each, with 33 added (docs/file-formats.md). All bytes are ASCII: a temperature above 94 is stored as
/// 94, one below -33 as -33, and a drive whose index is above 94 has no records.

/// The temperature of one drive.
struct TemperatureReading
{
    int device = 0; ///< place in the device list
    qint32 celsius = 0;
};

/// Returns the path of the log. `directory` ends with a separator, of either kind.
[[nodiscard]] QString temperatureLogIn(const QString &directory);

/// Appends a record for each reading at `now` and syncs the file. Removes the rest of a record that a crash
/// or a full disk cut short, which would shift every record after it. Fails if the records may be lost: if
/// the path is not absolute, or belongs to something else than a regular file, or if the disk fails.
Result<void> appendTemperatures(const QString &path, const QVector<TemperatureReading> &readings,
                                const QDateTime &now);
