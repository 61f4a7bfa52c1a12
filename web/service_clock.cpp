// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/service_clock.h"

#include <utility>

namespace web {

namespace {

constexpr qint64 kHour = 3600;

} // namespace

QTimeZone zoneOf(const std::optional<client::ServiceTime> &reported, const QByteArray &configured)
{
    if (reported)
        return reported->time.timeZone();
    // Qt takes an empty name for a valid zone.
    return configured.isEmpty() ? QTimeZone::systemTimeZone() : QTimeZone(configured);
}

ServiceClock::ServiceClock(QTimeZone zone)
    : m_zone(std::move(zone))
{}

qint64 ServiceClock::secondsSinceEpoch(const QDateTime &local)
{
    const qint64 seconds = local.toSecsSinceEpoch();
    const qint64 hour = seconds / kHour;
    if (hour != m_hour) {
        m_hour = hour;
        m_offset = QDateTime(local.date(), local.time(), m_zone).offsetFromUtc();
    }
    return seconds - m_offset;
}

QDateTime ServiceClock::localTime(qint64 secondsSinceEpoch) const
{
    const QDateTime utc = QDateTime::fromSecsSinceEpoch(secondsSinceEpoch, Qt::UTC);
    return utc.addSecs(m_zone.offsetFromUtc(utc));
}

} // namespace web
