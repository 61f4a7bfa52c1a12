// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/schedule.h"

#include "disk/date_time_text.h"
#include "scan/logging.h"

#include <QStringList>

namespace {

constexpr int kPayloadFields = 5;              // the fifth must be there and is not read
constexpr int kDueSeconds = 42;                // two to three turns of the check that runs every 20 s
constexpr qint32 kScheduledBlockSize = 262144; // bytes

bool isScheduledDay(const DeviceRecord &device, const QDate &today)
{
    switch (device.schedKind) {
    case schedule_kind::kOnce:
        return device.schedDate == today;
    case schedule_kind::kDaily:
        return true;
    case schedule_kind::kWeekly:
        return device.schedParam == today.dayOfWeek() - 1;
    default:
        return false;
    }
}

} // namespace

std::optional<ScheduleChange> parseScheduleChange(const QString &payload)
{
    const QStringList fields = payload.split(QStringLiteral("~;"));
    qCDebug(lcScan) << "parseSetScanSched Numbers of params:" << fields.size() << "Line:" << payload;
    if (fields.size() != kPayloadFields)
        return std::nullopt;
    const DateAndTime moment = parseDateTime(fields[3]);
    return ScheduleChange{fields[0].toInt(), fields[1].toInt(), fields[2].toInt(), moment.date, moment.time};
}

void applyScheduleChange(const ScheduleChange &change, DeviceList &devices)
{
    if (change.device < 0 || change.device >= devices.size())
        return;
    DeviceRecord &device = devices[change.device];
    device.schedKind = change.kind;
    device.schedParam = change.param;
    device.schedDate = change.date;
    device.schedTime = change.time;
}

bool isScanDue(const DeviceRecord &device, const QDateTime &now)
{
    const QTime time = now.time();
    return isScheduledDay(device, now.date()) && time <= device.schedTime &&
           device.schedTime <= time.addSecs(kDueSeconds);
}

QVector<ScanRequest> dueScans(const DeviceList &devices, const QDateTime &now)
{
    QVector<ScanRequest> scans;
    for (int i = 0; i < devices.size(); ++i) {
        const DeviceRecord &device = devices[i];
        if (!isScanDue(device, now))
            continue;
        qCDebug(lcScan) << "scheduled scan is due: device" << i << "at" << device.schedTime << "now" << now;
        scans.append({i, kScheduledBlockSize, 0, qint64(device.capacity / quint64(kScanSectorSize)) - 1});
    }
    return scans;
}
