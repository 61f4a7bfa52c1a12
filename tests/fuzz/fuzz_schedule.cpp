// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/schedule.h"

#include "fuzz/fuzz_input.h"
#include "protocol/payloads.h"
#include "protocol/requests.h"

#include <QStringList>

#include <tuple>

namespace {

/// Returns the payload that sets a drive's schedule, made from the reply that shows it.
QString payloadFromReply(const DeviceList &devices, int index)
{
    const QString reply = payload::scanSchedule(devices);
    const QStringList fields =
        reply.split(QStringLiteral("]![")).value(index + 1).split(QStringLiteral("~;"));
    require(fields.size() == 5);
    return QStringList{fields[0], fields[1], fields[2], fields[3] + fields[4], QString()}.join(
        QStringLiteral("~;"));
}

std::optional<ScheduleChange> parse(const QString &payload)
{
    return request::scheduleChange(request::Fields({QString(), payload}));
}

auto schedule(const DeviceRecord &device)
{
    return std::tie(device.schedule.kind, device.schedule.weekday, device.schedule.date,
                    device.schedule.time);
}

} // namespace

/// Input: a schedule payload. It changes one drive at most. Setting the reported schedule again changes
/// nothing, and it is due at its own time alone.
void fuzz(const QByteArray &bytes)
{
    const auto change = parse(QString::fromUtf8(bytes));
    if (!change)
        return;
    const DeviceList unscheduled(3);
    DeviceList devices = unscheduled;
    applyScheduleChange(*change, devices);
    require(devices.size() == unscheduled.size());
    for (int i = 0; i < devices.size(); ++i) {
        const DeviceRecord &device = devices[i];
        if (i != change->device) {
            require(schedule(device) == schedule(unscheduled[i]));
            continue;
        }
        if (device.schedule.date.year() < 2000 || !device.schedule.time.isValid())
            continue; // shown without a date or time, or in another century
        DeviceList again = unscheduled;
        applyScheduleChange(parse(payloadFromReply(devices, i)).value(), again);
        require(schedule(device) == schedule(again[i]));
        const QDateTime moment(device.schedule.date, device.schedule.time, Qt::UTC);
        require(!isScanDue(device, moment.addSecs(1)) && !isScanDue(device, moment.addSecs(-43)));
        require(!isScanDue(device, moment) ||
                (device.schedule.kind >= ScheduleKind::Once && device.schedule.kind <= ScheduleKind::Weekly));
    }
}
