// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/peer.h"
#include "protocol/reply.h"
#include "protocol/requests.h"

#include <optional>

class CommandTarget;
class SmartTexts;

/// The commands: each takes the value of its request and returns the reply.
namespace command {

struct Context
{
    CommandTarget &target; ///< outlives the reply
    SmartTexts &smartTexts;
    const Peer &peer;
};

Reply authenticate(const request::Credentials &credentials, const Context &context);
Reply keepAlive(const request::None &none, const Context &context);
Reply disconnect(const request::None &none, const Context &context);
Reply version(const request::None &none, const Context &context);
Reply time(const request::None &none, const Context &context);

Reply deviceCount(const request::None &none, const Context &context);
Reply deviceInfo(const qint32 &device, const Context &context);
Reply allDeviceInfo(const request::None &none, const Context &context);
Reply volumeInfo(const request::VolumePlace &place, const Context &context);
Reply allVolumeInfo(const request::None &none, const Context &context);
Reply smartInfo(const qint32 &device, const Context &context);
Reply smartValue(const qint32 &device, const Context &context);
Reply allSmartInfo(const request::None &none, const Context &context);
Reply temperatures(const HistoryPeriod &period, const Context &context);
Reply temperatureReport(const HistoryPeriod &period, const Context &context);

Reply reset(const request::None &none, const Context &context);
Reply refresh(const request::None &none, const Context &context);
Reply setPollIntervals(const std::optional<PollIntervals> &intervals, const Context &context);
Reply changeSettings(const std::optional<ServiceSettings> &change, const Context &context);
Reply testMail(const std::optional<MailTest> &test, const Context &context);

Reply schedules(const request::None &none, const Context &context);
Reply changeSchedule(const std::optional<ScheduleChange> &change, const Context &context);
Reply scanStatus(const request::None &none, const Context &context);
Reply startScan(const request::ScanStart &start, const Context &context);
Reply stopScan(const request::ScanStop &stop, const Context &context);

Reply userCount(const request::None &none, const Context &context);
Reply userInfo(const qint32 &account, const Context &context);
Reply checkPassword(const request::Credentials &credentials, const Context &context);

Reply alerts(const request::None &none, const Context &context);
Reply acknowledge(const FindingName &finding, const Context &context);
Reply forgetDrive(const QString &drive, const Context &context);
Reply testAlarms(const request::None &none, const Context &context);

} // namespace command
