// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/greeting.h"
#include "client/inventory.h"
#include "client/scans.h"

#include <QDateTime>
#include <QJsonObject>
#include <QString>
#include <QTimeZone>
#include <QVector>

#include <array>
#include <memory>
#include <optional>

namespace web {

enum class ServiceState { Ready, Detecting, Paused, Unreachable };

/// Polls without an answer after which a service's values no longer count.
inline constexpr int kStalePolls = 3;

/// The mean temperatures of a drive in the 24 hours up to the last poll, the oldest first.
using HourlyMeans = std::array<std::optional<double>, 24>;

/// The answers of a service to one poll. The settings contain only whether a mail password is set.
struct ServiceData
{
    client::Greeting greeting;
    QTimeZone zone = QTimeZone::utc(); ///< of the service's local times
    QVector<client::Drive> drives;
    QVector<client::Volume> volumes;
    QVector<QVector<client::Attribute>> attributes; ///< of each drive
    QVector<client::ScanStatus> scans;
    QVector<client::ScheduleEntry> schedule;
    QVector<HourlyMeans> temperatures; ///< of each drive
    std::optional<QJsonObject> alerts; ///< nullopt: the service does not know the command
};

/// One service as it is known at one moment.
struct ServiceSnapshot
{
    QString name;
    QString host;
    quint16 port = 0;
    ServiceState state = ServiceState::Unreachable;
    QString error;                           ///< why the last poll failed; empty after an answer
    QDateTime lastAnswer;                    ///< UTC; invalid: never
    int missedPolls = 0;                     ///< in a row
    std::shared_ptr<const ServiceData> data; ///< of the last complete poll; null: none yet
    qint64 answeredPolls = 0;
    qint64 failedPolls = 0;
    double pollSeconds = 0; ///< how long the last poll took

    [[nodiscard]] bool isStale() const { return missedPolls >= kStalePolls; }
};

/// All services in the order of the configuration. Never changes once it is shared between threads.
struct Snapshot
{
    QVector<std::shared_ptr<const ServiceSnapshot>> services;

    /// Returns the service `name`; null if there is none.
    [[nodiscard]] const ServiceSnapshot *find(const QString &name) const
    {
        for (const auto &service : services) {
            if (service->name == name)
                return service.get();
        }
        return nullptr;
    }
};

} // namespace web
