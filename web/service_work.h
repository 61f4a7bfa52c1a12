// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/history.h"
#include "client/scans.h"
#include "web/answer.h"

#include <QJsonObject>
#include <QString>
#include <QTimeZone>

#include <optional>
#include <variant>

namespace web {

/// Requests to a service that a handler cannot answer from the snapshot, as values.
namespace work {

/// The drive that a change is meant for: its number in the service's list, and the serial that it must have.
struct Drive
{
    qint32 number = 0;
    QString serial;
};

struct StartScan
{
    Drive drive;
    std::optional<quint64> first; ///< sectors of 512 bytes; without a value the whole drive
    std::optional<quint64> last;
    qint32 block = 0; ///< bytes
};

struct StopScan
{
    Drive drive;
};

struct SetSchedule
{
    Drive drive;
    client::ScheduleEntry entry;
};

struct SetSettings
{
    QJsonObject changes; ///< of the settings document
};

struct TestMail
{
    QJsonObject changes; ///< settings for this mail alone
    QString body;
};

struct Refresh
{
};

struct Detect
{
};

struct Acknowledge
{
    QString serial;
    QString kind; ///< empty: all
    QString id;   ///< empty: all
};

/// The records of a drive. Times are local times of the service held as if they were UTC.
struct ReadTemperatures
{
    QDateTime from;
    QDateTime to;
    /// Makes the response; called on a thread of its own, because a year of records takes time.
    std::function<HttpResponse(const client::TemperatureHistory &)> respond;
};

} // namespace work

using ServiceWork =
    std::variant<work::StartScan, work::StopScan, work::SetSchedule, work::SetSettings, work::TestMail,
                 work::Refresh, work::Detect, work::Acknowledge, work::ReadTemperatures>;

/// Takes work to the services. Implemented by the composition; every function may be called on any thread.
class ServiceGateway
{
public:
    ServiceGateway() = default;
    ServiceGateway(const ServiceGateway &) = delete;
    ServiceGateway &operator=(const ServiceGateway &) = delete;
    virtual ~ServiceGateway() = default;

    /// Starts `work` at `service`, which is one of the configured ones. `reply` is called once.
    virtual void start(const QString &service, const ServiceWork &work, const Reply &reply) = 0;
};

} // namespace web
