// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QJsonValue>
#include <QString>
#include <QTimeZone>

#include <optional>

namespace client {

/// Formats bytes in the units that drives are sold in (1 TB is 10^12 bytes), with three digits: "931 GB".
[[nodiscard]] QString sizeText(quint64 bytes);

/// Formats a rate: "123 MB/s".
[[nodiscard]] QString rateText(double bytesPerSecond);

/// Formats a duration: "12 s", "3 min", "3 min 20 s", "1 h 05 min", "2 d 4 h".
[[nodiscard]] QString durationText(qint64 seconds);

/// Formats a time without its zone: "2026-11-15 00:36:07"; "-" for an invalid one.
[[nodiscard]] QString timeText(const QDateTime &time);

/// Returns the moment of a local time of the service, which is held as if it were UTC. `zone` is the
/// service's time zone.
[[nodiscard]] QDateTime withZone(const QDateTime &localTime, const QTimeZone &zone);

/// Formats a time with its offset, for documents: "2026-11-15T00:36:07+01:00"; null for an invalid one.
[[nodiscard]] QJsonValue isoTime(const QDateTime &time);

/// Parses bytes: "65536", "64K" or "1M" (powers of 1024, as blocks are counted).
[[nodiscard]] std::optional<qint32> parseBlockSize(const QString &text);

/// Parses an interval to milliseconds: "180", "180s", "3m" or "2h"; a number alone is seconds.
[[nodiscard]] std::optional<qint64> parseInterval(const QString &text);

/// Parses a local time of the service: "2026-11-15", "2026-11-15 00:36" or "2026-11-15T00:36:07". The result
/// is held as if it were UTC.
[[nodiscard]] std::optional<QDateTime> parseTime(const QString &text);

} // namespace client
