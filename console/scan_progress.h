// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/scans.h"

#include <QString>

#include <optional>

/// How fast a scan goes, from its progress at several moments. The latest count most.
class RateMeter
{
public:
    /// `milliseconds` on a clock that never goes back. A scan that has begun anew starts the meter anew.
    void sample(qint64 milliseconds, const client::ScanStatus &status);

    /// Nothing until two samples of the same scan are known.
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

/// How long a scan on a drive of `sectors` sectors still takes at this rate. Where it ends is not reported:
/// when the percentage agrees, it is the drive's end; else the percentage itself has to do.
[[nodiscard]] std::optional<qint64> secondsLeft(const client::ScanStatus &status, quint64 sectors,
                                                double bytesPerSecond);
