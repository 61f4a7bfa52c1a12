// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "scan/scan_request.h"

#include <QDate>
#include <QDateTime>
#include <QHash>

/// A schedule as a console sets it.
struct ScheduleChange
{
    qint32 device = 0;
    ScanSchedule schedule;
};

/// Stores the device's new schedule; ignores a device that does not exist.
void applyScheduleChange(const ScheduleChange &change, DeviceList &devices);

/// Returns whether the device's scheduled time is between `now` and 42 s later, on a day of the schedule.
/// Both limits are times of day: from 23:59:18 on the later one is early in the morning, and nothing is due.
[[nodiscard]] bool isScanDue(const DeviceRecord &device, const QDateTime &now);

/// The scheduled moment of each drive that was served last: two or three checks find the same moment due.
class ServedSchedules
{
public:
    [[nodiscard]] bool isServed(const DeviceRecord &device, const QDate &today) const;
    void serve(const DeviceRecord &device, const QDate &today);

private:
    QHash<QString, QDateTime> m_moments; ///< by path
};

/// Returns a scan of the whole drive for every device whose schedule is due and was not served yet.
[[nodiscard]] QVector<ScanRequest> dueScans(const DeviceList &devices, const ServedSchedules &served,
                                            const QDateTime &now);
