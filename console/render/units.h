// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QString>

#include <optional>

namespace render {

/// Bytes in the units that drives are sold in (1 TB is 10^12 bytes), three digits: "1.00 TB", "931 GB".
[[nodiscard]] QString sizeText(quint64 bytes);

/// "123 MB/s".
[[nodiscard]] QString rateText(double bytesPerSecond);

/// "12 s", "3 min", "3 min 20 s", "1 h 05 min", "2 d 4 h".
[[nodiscard]] QString durationText(qint64 seconds);

/// Local time, "2026-11-15 00:36:07"; "-" for a moment that never was.
[[nodiscard]] QString timeText(const QDateTime &time);

/// "2026-11-15T00:36:07", for machines; empty for a moment that never was.
[[nodiscard]] QString isoTime(const QDateTime &time);

/// Bytes from "65536", "64K" or "1M" (powers of 1024, as blocks are counted).
[[nodiscard]] std::optional<qint32> parseBlockSize(const QString &text);

/// Milliseconds from "180", "180s", "3m" or "2h"; a number alone is seconds.
[[nodiscard]] std::optional<qint64> parseInterval(const QString &text);

/// A local time from "2026-11-15", "2026-11-15 00:36" or "2026-11-15T00:36:07".
[[nodiscard]] std::optional<QDateTime> parseTime(const QString &text);

} // namespace render
