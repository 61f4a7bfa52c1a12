// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

#include <optional>

/// The counter of attribute 9. Its unit differs between drive makers and is not reported by the drive.
struct PowerOnCounter
{
    enum class Unit {
        Unknown = 0,
        Hours = 1,
        Minutes = 2,
        HalfMinutes = 3,
        Seconds = 4,
    };

    qint64 raw = 0;
    Unit unit = Unit::Unknown;
    /// True if the unit was measured over two minutes; false if it was inferred from the value.
    bool isMeasured = false;

    /// Returns nothing while the unit is unknown, and where the result is above a century: such a raw value
    /// holds more than the counter.
    [[nodiscard]] std::optional<qint64> hours() const
    {
        constexpr qint64 kCountsPerHour[] = {0, 1, 60, 120, 3600};
        constexpr qint64 kCenturyHours = qint64{100} * 8766;
        if (unit == Unit::Unknown || raw < 0)
            return std::nullopt;
        const qint64 hours = raw / kCountsPerHour[int(unit)];
        return hours <= kCenturyHours ? std::optional<qint64>(hours) : std::nullopt;
    }
};
