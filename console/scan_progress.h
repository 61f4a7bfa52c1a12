// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/scans.h"

#include <QString>

#include <optional>

/// The rate of a scan, computed from its progress at several times. The latest ones have the highest weight.
class RateMeter
{
public:
    /// `milliseconds` is the time of a monotonic clock. A new scan resets the meter.
    void sample(qint64 milliseconds, const client::ScanStatus &status);

    /// Returns nothing until there are two samples of the same scan.
    [[nodiscard]] std::optional<double> bytesPerSecond() const { return m_rate; }

private:
    struct Sample
    {
        qint64 milliseconds = 0;
        quint64 firstSector = 0;
        quint64 currentSector = 0;
    };

    std::optional<Sample> m_last;
    std::optional<double> m_rate;
};

/// Returns the remaining time of a scan on a drive with `sectors` sectors. The end of its range is not
/// reported: it is the end of the drive if that agrees with the percentage, else it is computed from the
/// percentage.
[[nodiscard]] std::optional<qint64> secondsLeft(const client::ScanStatus &status, quint64 sectors,
                                                double bytesPerSecond);
