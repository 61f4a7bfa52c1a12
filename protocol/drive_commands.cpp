// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/commands.h"

#include "protocol/command_target.h"
#include "protocol/list_replies.h"
#include "protocol/payloads.h"
#include "protocol/reply_texts.h"

namespace {

/// Replies with `text` when the operation that `start` starts has finished.
template <typename Start>
Reply replyWhenFinished(const QString &text, Start start)
{
    return Reply::awaited([text, start](const Respond &respond) {
        start([text, respond] { respond(std::make_unique<ReplySource>(text)); });
    });
}

} // namespace

namespace command {

Reply reset(const request::None & /*none*/, const Context &context)
{
    return replyWhenFinished(
        QStringLiteral("RESET_OK"),
        [&target = context.target](const Completion &started) { target.reset(started); });
}

Reply refresh(const request::None & /*none*/, const Context &context)
{
    return replyWhenFinished(
        QStringLiteral("REFRESH_OK"),
        [&target = context.target](const Completion &finished) { target.refresh(finished); });
}

Reply schedules(const request::None & /*none*/, const Context &context)
{
    return QLatin1String("SCANSCHED") + payload::scanSchedule(context.target.devices());
}

Reply changeSchedule(const std::optional<ScheduleChange> &change, const Context &context)
{
    if (change)
        context.target.changeSchedule(*change);
    return schedules({}, context);
}

/// Looks which scans run before it takes their progress: a scan that ends in between shows its end.
Reply scanStatus(const request::None & /*none*/, const Context &context)
{
    const DeviceList &devices = context.target.devices();
    QVector<bool> isRunning(devices.size());
    for (int i = 0; i < devices.size(); ++i)
        isRunning[i] = context.target.isScanRunning(i);
    context.target.publishScanProgress();
    QVector<ScanStatusReply::Drive> drives(devices.size());
    for (int i = 0; i < devices.size(); ++i)
        drives[i] = {payload::scanStatus(i, devices[i], isRunning[i]).toLatin1(), devices[i].scan.badRanges};
    return {std::make_unique<ScanStatusReply>(listReply("STATSCAN", {}), std::move(drives))};
}

Reply startScan(const request::ScanStart &start, const Context &context)
{
    context.target.startScan(start.scan);
    return listReply("STARTEDSCAN", start.device);
}

Reply stopScan(const request::ScanStop &stop, const Context &context)
{
    return replyWhenFinished(listReply("STOPEDSCAN", stop.device),
                             [&target = context.target, index = stop.index](const Completion &finished) {
                                 target.stopScan(index, finished);
                             });
}

} // namespace command
