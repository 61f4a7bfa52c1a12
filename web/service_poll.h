// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/conversation.h"
#include "web/configuration.h"
#include "web/service_clock.h"
#include "web/snapshot.h"

#include <QElapsedTimer>
#include <QObject>

#include <functional>
#include <memory>

namespace web {

/// The result of one poll of a service: data, or the failure.
struct PollResult
{
    std::shared_ptr<ServiceData> data; ///< without `temperatures`; null after a failure
    client::Failure failure;
    std::optional<client::ServiceTime> time;
    client::TemperatureHistory history; ///< since the time that was asked for
    double seconds = 0;
};

/// Asks one service for everything, once, on the event loop's thread.
class ServicePoll : public QObject
{
    Q_OBJECT
public:
    /// Starts at once. `historyFrom` is a time since 1970 in seconds, UTC; a negative one counts back from
    /// the service's present. `finished` is called once, from the event loop; it may delete the object later.
    ServicePoll(const ServiceAddress &service, qint64 historyFrom, std::function<void(PollResult)> finished);

private:
    void askAll(const client::Greeting &greeting);
    void askTemperatures();
    void end();

    /// Asks `request`; `take` gets the value. The first failure ends the poll.
    template <typename T, typename Take>
    void ask(const client::Request<T> &request, Take take);

    client::Conversation m_conversation;
    const QByteArray m_configuredZone;
    const qint64 m_historyFrom;
    std::function<void(PollResult)> m_finished;
    PollResult m_result;
    QElapsedTimer m_clock;
};

} // namespace web
