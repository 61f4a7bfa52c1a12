// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "scan/scan_request.h"

#include <QDate>
#include <QDateTime>
#include <QHash>

/// DeviceRecord::schedKind.
namespace schedule_kind {
inline constexpr qint32 kNone = 0;
inline constexpr qint32 kOnce = 1;
inline constexpr qint32 kDaily = 2;
inline constexpr qint32 kWeekly = 3;
} // namespace schedule_kind

/// A schedule as a console sets it.
struct ScheduleChange
{
    qint32 device = 0;
    qint32 kind = schedule_kind::kNone;
    qint32 param = 0; ///< day of the week, 0 Monday to 6 Sunday
    QDate date;       ///< not valid: a schedule by date is never due
    QTime time;       ///< not valid: the schedule is never due
};

/// Gives the device its new schedule; a device that is not there has none to give.
void applyScheduleChange(const ScheduleChange &change, DeviceList &devices);

/// Whether the device's scheduled time lies between `now` and 42 s later, on a day that the schedule means.
/// Both ends are times of day: from 23:59:18 on the later one is early in the morning, and nothing is due.
[[nodiscard]] bool isScanDue(const DeviceRecord &device, const QDateTime &now);

/// The scheduled moment of each drive that was served last: a moment is due at two or three checks.
class ServedSchedules
{
public:
    [[nodiscard]] bool isServed(const DeviceRecord &device, const QDate &today) const;
    void serve(const DeviceRecord &device, const QDate &today);

private:
    QHash<QString, QDateTime> m_moments; ///< by path
};

/// Returns a scan of the whole drive for every device whose schedule is due and not served yet.
[[nodiscard]] QVector<ScanRequest> dueScans(const DeviceList &devices, const ServedSchedules &served,
                                            const QDateTime &now);
