// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/schedule.h"

#include "fuzz/fuzz_input.h"
#include "protocol/payloads.h"

#include <QStringList>

namespace {

/// The payload that a console would set a drive's schedule with, from the reply that shows it.
QString payloadFromReply(const DeviceList &devices, int index)
{
    const QString reply = payload::scanSchedule(devices);
    const QStringList fields =
        reply.split(QStringLiteral("]![")).value(index + 1).split(QStringLiteral("~;"));
    require(fields.size() == 5);
    return QStringList{fields[0], fields[1], fields[2], fields[3] + fields[4], QString()}.join(
        QStringLiteral("~;"));
}

bool isSameSchedule(const DeviceRecord &a, const DeviceRecord &b)
{
    return a.schedKind == b.schedKind && a.schedParam == b.schedParam && a.schedDate == b.schedDate &&
           a.schedTime == b.schedTime;
}

} // namespace

/// A schedule that a payload sets is shown, and set again from what is shown; one drive at most has changed,
/// and is due at its own time alone.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const DeviceList unscheduled(3);
    const auto change = parseScheduleChange(QString::fromUtf8(bytesOf(data, size)));
    if (!change)
        return 0;
    DeviceList devices = unscheduled;
    applyScheduleChange(*change, devices);
    require(devices.size() == unscheduled.size());
    for (int i = 0; i < devices.size(); ++i) {
        const DeviceRecord &device = devices[i];
        if (i != change->device) {
            require(isSameSchedule(device, unscheduled[i]));
            continue;
        }
        if (device.schedDate.year() < 2000 || !device.schedTime.isValid())
            continue; // shown without a date or time, or in another century
        DeviceList again = unscheduled;
        applyScheduleChange(parseScheduleChange(payloadFromReply(devices, i)).value(), again);
        require(isSameSchedule(device, again[i]));
        const QDateTime moment(device.schedDate, device.schedTime, Qt::UTC);
        require(!isScanDue(device, moment.addSecs(1)) && !isScanDue(device, moment.addSecs(-43)));
        require(!isScanDue(device, moment) || (device.schedKind >= 1 && device.schedKind <= 3));
    }
    return 0;
}
