// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/schedule.h"

#include "scan/logging.h"

namespace {

constexpr int kDueSeconds = 42;                // two to three turns of the check that runs every 20 s
constexpr qint32 kScheduledBlockSize = 262144; // bytes

bool isScheduledDay(const ScanSchedule &schedule, const QDate &today)
{
    switch (schedule.kind) {
    case ScheduleKind::Once:
        return schedule.date == today;
    case ScheduleKind::Daily:
        return true;
    case ScheduleKind::Weekly:
        return schedule.weekday == today.dayOfWeek() - 1;
    case ScheduleKind::None:
        break;
    }
    return false;
}

} // namespace

void applyScheduleChange(const ScheduleChange &change, DeviceList &devices)
{
    if (change.device < 0 || change.device >= devices.size())
        return;
    devices[change.device].schedule = change.schedule;
}

bool isScanDue(const DeviceRecord &device, const QDateTime &now)
{
    const QTime time = now.time();
    return isScheduledDay(device.schedule, now.date()) && time <= device.schedule.time &&
           device.schedule.time <= time.addSecs(kDueSeconds);
}

bool ServedSchedules::isServed(const DeviceRecord &device, const QDate &today) const
{
    return m_moments.value(device.path) == QDateTime(today, device.schedule.time);
}

void ServedSchedules::serve(const DeviceRecord &device, const QDate &today)
{
    m_moments[device.path] = QDateTime(today, device.schedule.time);
}

QVector<ScanRequest> dueScans(const DeviceList &devices, const ServedSchedules &served, const QDateTime &now)
{
    QVector<ScanRequest> scans;
    for (int i = 0; i < devices.size(); ++i) {
        const DeviceRecord &device = devices[i];
        if (!isScanDue(device, now) || served.isServed(device, now.date()))
            continue;
        qCDebug(lcScan) << "scheduled scan is due: device" << i << "at" << device.schedule.time << "now"
                        << now;
        scans.append({i, kScheduledBlockSize, 0, qint64(device.capacity / quint64(kScanSectorSize)) - 1});
    }
    return scans;
}
