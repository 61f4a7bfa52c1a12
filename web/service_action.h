// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/conversation.h"
#include "web/configuration.h"
#include "web/service_work.h"

#include <QObject>

namespace web {

/// Carries out one piece of work at a service, on the event loop's thread: connects, checks that the drive is
/// the one that was meant, sends the request, and makes the response from the service's reply.
class ServiceAction : public QObject
{
    Q_OBJECT
public:
    /// Starts at once. `reply` is called once. `zone` is the time zone of the service.
    ServiceAction(const ServiceAddress &service, const QTimeZone &zone, ServiceWork work, Reply reply);

Q_SIGNALS:
    /// Sent once, from the event loop, after the reply.
    void finished();

private:
    template <typename T, typename Take>
    void ask(const client::Request<T> &request, Take take);
    /// Calls `proceed` with the drive if it has the serial, else responds 409.
    template <typename Proceed>
    void withDrive(const work::Drive &drive, Proceed proceed);
    void respond(const HttpResponse &response);
    void respond(const QJsonDocument &json);
    void respondScans();
    void fail(const client::Failure &failure);

    void run(const work::StartScan &work);
    void run(const work::StopScan &work);
    void run(const work::SetSchedule &work);
    void run(const work::SetSettings &work);
    void run(const work::TestMail &work);
    void run(const work::Refresh &work);
    void run(const work::Detect &work);
    void run(const work::Acknowledge &work);
    void run(const work::ReadTemperatures &work);

    client::Conversation m_conversation;
    const QTimeZone m_zone;
    const ServiceWork m_work;
    Reply m_reply;
};

} // namespace web
