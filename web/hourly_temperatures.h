// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/snapshot.h"

#include <QHash>
#include <QMap>

namespace web {

/// The temperatures of a service's drives in the last day, by hour.
class HourlyTemperatures
{
public:
    /// Adds one record.
    void add(qint32 drive, qint64 secondsSinceEpoch, qint32 celsius);

    /// Returns the means of the 24 hours that end with the hour of `now`, and forgets what is older.
    [[nodiscard]] HourlyMeans means(qint32 drive, qint64 nowSeconds);

    void clear() { m_hours.clear(); }

private:
    struct Sum
    {
        double total = 0;
        int count = 0;
    };

    QHash<qint32, QMap<qint64, Sum>> m_hours; ///< by drive, then by hours since 1970
};

} // namespace web
