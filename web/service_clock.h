// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/short_replies.h"

#include <QDateTime>
#include <QTimeZone>

#include <optional>

namespace web {

/// Returns the zone of a service: the one that it reported, else `configured`, else the zone of this machine.
[[nodiscard]] QTimeZone zoneOf(const std::optional<client::ServiceTime> &reported,
                               const QByteArray &configured);

/// Converts between UTC and the local time of a service. Records follow each other closely, so the offset of
/// an hour is looked up once.
class ServiceClock
{
public:
    explicit ServiceClock(QTimeZone zone);

    /// `local` is a local time of the service held as if it were UTC. Of an hour that repeats in autumn the
    /// first one is meant.
    [[nodiscard]] qint64 secondsSinceEpoch(const QDateTime &local);

    /// Returns the local time of the service, held as if it were UTC.
    [[nodiscard]] QDateTime localTime(qint64 secondsSinceEpoch) const;

    [[nodiscard]] const QTimeZone &zone() const { return m_zone; }

private:
    QTimeZone m_zone;
    qint64 m_hour = -1; ///< since 1970, local
    int m_offset = 0;   ///< seconds east of UTC in that hour
};

} // namespace web
