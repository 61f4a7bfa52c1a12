// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/commands.h"

#include "config/user_accounts.h"
#include "protocol/command_target.h"
#include "protocol/list_replies.h"
#include "protocol/payloads.h"
#include "protocol/reply_texts.h"
#include "protocol/smart_texts.h"

namespace {

template <typename List>
bool hasIndex(const List &list, qint32 index)
{
    return index >= 0 && index < list.size();
}

/// Returns a reply that contains a payload of one device.
Reply deviceReply(qint32 index, const command::Context &context, const char *word, const char *errorWord,
                  QString (*payloadOf)(const DeviceRecord &))
{
    const DeviceList &devices = context.target.devices();
    if (!hasIndex(devices, index))
        return indexError(errorWord, {QString::number(index)});
    return shortReply(word, {QString::number(index), payloadOf(devices[index])});
}

Reply historyReply(const char *word, const HistoryPeriod &period, const command::Context &context)
{
    return Reply::awaited([&target = context.target, word, period](const Respond &respond) {
        target.findTemperatures(period, [word, respond](HistoryReader reader) {
            respond(std::make_unique<HistoryReply>(listReply(word, {}), std::move(reader)));
        });
    });
}

} // namespace

namespace command {

Reply deviceCount(const request::None & /*none*/, const Context &context)
{
    return shortReply("DEVCOUNT", {QString::number(context.target.devices().size())});
}

Reply deviceInfo(const qint32 &device, const Context &context)
{
    return deviceReply(device, context, "DEVINFO_OK", "DEVINFO_ERR", payload::device);
}

Reply allDeviceInfo(const request::None & /*none*/, const Context &context)
{
    return listReply("ALLDEVINFO_OK", payload::allDevices(context.target.devices()));
}

Reply volumeInfo(const request::VolumePlace &place, const Context &context)
{
    const DeviceList &devices = context.target.devices();
    const QString device = QString::number(place.device);
    const QString volume = QString::number(place.volume);
    if (!hasIndex(devices, place.device))
        return indexError("VOLINFO_ERR", {device});
    const VolumeList &volumes = devices[place.device].volumes;
    if (!hasIndex(volumes, place.volume))
        return indexError("VOLINFO_ERR", {device, volume});
    return shortReply("VOLINFO_OK", {device, volume, payload::volume(volumes[place.volume])});
}

Reply allVolumeInfo(const request::None & /*none*/, const Context &context)
{
    return listReply("ALLVOLINFO_OK", payload::allVolumes(context.target.devices()));
}

Reply smartInfo(const qint32 &device, const Context &context)
{
    return deviceReply(device, context, "SMARTINFO_OK", "SMARTINFO_ERR", payload::smartInformation);
}

Reply smartValue(const qint32 &device, const Context &context)
{
    return deviceReply(device, context, "SMARTVALUE_OK", "SMARTVALUE_ERR", payload::smartValues);
}

/// Without devices the payload is "0", without attributes it is empty.
Reply allSmartInfo(const request::None & /*none*/, const Context &context)
{
    const DeviceList &devices = context.target.devices();
    const QString head = listReply("ALLSMARTINFO_OK", devices.isEmpty() ? QStringLiteral("0") : QString());
    return {std::make_unique<JoinedReply>(head, context.smartTexts.update(devices))};
}

Reply temperatures(const HistoryPeriod &period, const Context &context)
{
    return historyReply("STATD", period, context);
}

Reply temperatureReport(const HistoryPeriod &period, const Context &context)
{
    return historyReply("STATR", period, context);
}

Reply userCount(const request::None & /*none*/, const Context &context)
{
    return shortReply("USERCOUNT", {QString::number(getUserCount(context.target.accounts()))});
}

Reply userInfo(const qint32 &account, const Context &context)
{
    return shortReply("USERINFO",
                      {QString::number(account), getUserInfo(context.target.accounts(), account)});
}

} // namespace command
