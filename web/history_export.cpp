// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/history_export.h"

#include "client/requests.h"
#include "web/metrics/temperature_export.h"
#include "web/service_clock.h"

#include <QEventLoop>

#include <optional>

namespace web {

namespace {

using namespace std::chrono_literals;

constexpr auto kTimeout = 10s;
constexpr auto kHistoryTimeout = 300s;

} // namespace

Result<QByteArray> exportHistory(const ServiceAddress &service)
{
    QEventLoop loop;
    client::Conversation conversation(service.endpoint, kTimeout);
    QVector<client::Drive> drives;
    std::optional<client::ServiceTime> time;
    std::optional<Result<QByteArray>> result;
    const auto fail = [&](const client::Failure &failure) {
        if (!result)
            result = Result<QByteArray>(Error{failure.text});
        loop.quit();
    };

    conversation.ask(client::requests::allDrives(), [&](const client::Result<QVector<client::Drive>> &reply) {
        if (reply)
            drives = *reply;
        else
            fail(reply.failure());
    });
    conversation.ask(client::requests::raw(QStringLiteral("X-TIME")),
                     [&](const client::Result<QString> &reply) {
                         if (reply)
                             time = client::parseServiceTime(*reply);
                     });
    const QDateTime first(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC);
    const QDateTime last(QDate(2099, 12, 31), QTime(23, 59, 59), Qt::UTC);
    auto request = client::requests::temperatures(first, last);
    request.allowance = kHistoryTimeout;
    conversation.ask(request, [&](const client::Result<client::TemperatureHistory> &history) {
        if (history && !result)
            result = metrics::exportTemperatures(*history, drives, service.name,
                                                 ServiceClock(zoneOf(time, service.timeZone)));
        else
            fail(history.failure());
        loop.quit();
    });
    loop.exec();
    return result.value_or(Error{QStringLiteral("interrupted")});
}

} // namespace web
