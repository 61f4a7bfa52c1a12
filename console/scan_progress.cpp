// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/scan_progress.h"

#include <cmath>

void RateMeter::sample(qint64 milliseconds, const client::ScanStatus &status)
{
    constexpr double kWeightOfLatest = 0.4;
    constexpr double kMillisecondsPerSecond = 1000.0;
    const Sample sample{milliseconds, status.firstSector, status.currentSector};
    const bool continues = m_last && status.state == client::ScanState::Running &&
                           m_last->firstSector == sample.firstSector &&
                           m_last->currentSector <= sample.currentSector;
    if (!continues) {
        m_rate.reset();
    } else if (milliseconds > m_last->milliseconds) {
        const double bytes = double(sample.currentSector - m_last->currentSector) * double(kScanSectorSize);
        const double latest = bytes * kMillisecondsPerSecond / double(milliseconds - m_last->milliseconds);
        m_rate = m_rate ? *m_rate + kWeightOfLatest * (latest - *m_rate) : latest;
    }
    m_last = sample;
}

std::optional<qint64> secondsLeft(const client::ScanStatus &status, quint64 sectors, double bytesPerSecond)
{
    constexpr double kLongestShown = 100.0 * 365 * 86400; // a century: the drive no longer answers
    if (status.state != client::ScanState::Running || bytesPerSecond <= 0 ||
        status.currentSector < status.firstSector)
        return std::nullopt;
    const double done = double(status.currentSector - status.firstSector);
    const double toEnd = double(sectors) - 1 - double(status.firstSector);
    double left = 0;
    if (toEnd > 0 && std::floor(done * 100 / toEnd) == status.percent)
        left = toEnd - done;
    else if (status.percent > 0)
        left = done * (100.0 / status.percent - 1);
    else
        return std::nullopt;
    const double seconds = left * double(kScanSectorSize) / bytesPerSecond;
    return seconds < kLongestShown ? std::optional<qint64>(qint64(seconds)) : std::nullopt;
}
