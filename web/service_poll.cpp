// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/service_poll.h"

#include "client/field_reader.h"
#include "client/requests.h"

#include <QJsonDocument>

#include <utility>

namespace web {

namespace {

using namespace std::chrono_literals;
using client::FailureKind;

constexpr auto kTimeout = 10s;

/// Returns the attributes of each of `drives` drives; nullopt if one belongs to none of them.
std::optional<QVector<QVector<client::Attribute>>> byDrive(const QVector<client::DriveAttribute> &list,
                                                           int drives)
{
    QVector<QVector<client::Attribute>> result(drives);
    for (const client::DriveAttribute &item : list) {
        if (item.drive < 0 || item.drive >= drives)
            return std::nullopt;
        result[item.drive].append(item.attribute);
    }
    return result;
}

/// Returns the document of X-ALERTS; nullopt where the service does not know the command.
std::optional<QJsonObject> alertsDocument(const QString &reply)
{
    const auto json = client::afterPrefix(reply, QStringLiteral("X-ALERTS_OK]!["));
    const QJsonDocument document = QJsonDocument::fromJson(json.value_or(QString()).toUtf8());
    return document.isObject() ? std::optional<QJsonObject>(document.object()) : std::nullopt;
}

} // namespace

ServicePoll::ServicePoll(const ServiceAddress &service, qint64 historyFrom,
                         std::function<void(PollResult)> finished)
    : m_conversation(service.endpoint, kTimeout)
    , m_configuredZone(service.timeZone)
    , m_historyFrom(historyFrom)
    , m_finished(std::move(finished))
{
    m_clock.start();
    m_conversation.greet([this](const client::Result<client::Greeting> &greeting) {
        if (greeting) {
            askAll(*greeting);
            return;
        }
        m_result.failure = greeting.failure();
        end();
    });
}

template <typename T, typename Take>
void ServicePoll::ask(const client::Request<T> &request, Take take)
{
    m_conversation.ask(request, [this, take](const client::Result<T> &reply) {
        if (reply)
            take(*reply);
        else if (m_result.data) {
            m_result.data.reset();
            m_result.failure = reply.failure();
            end();
        }
    });
}

void ServicePoll::askAll(const client::Greeting &greeting)
{
    m_result.data = std::make_shared<ServiceData>();
    ServiceData &data = *m_result.data;
    data.greeting = greeting;
    // The password is sent with every greeting and must not leave this program: only whether it is set.
    QString &password = data.greeting.settings.smtpPass;
    password = password.isEmpty() ? QString() : QStringLiteral("*");

    ask(client::requests::allDrives(), [&data](const auto &drives) { data.drives = drives; });
    ask(client::requests::allVolumes(), [&data](const auto &volumes) { data.volumes = volumes; });
    ask(client::requests::scans(), [&data](const auto &scans) { data.scans = scans; });
    ask(client::requests::schedule(), [&data](const auto &schedule) { data.schedule = schedule; });
    ask(client::requests::raw(QStringLiteral("X-ALERTS")),
        [&data](const QString &reply) { data.alerts = alertsDocument(reply); });
    ask(client::requests::allAttributes(), [this, &data](const auto &list) {
        const auto attributes = byDrive(list, int(data.drives.size()));
        if (attributes)
            data.attributes = *attributes;
        else
            m_result.failure = {FailureKind::NotUnderstood,
                                QStringLiteral("it reports attributes of a drive that it does not have")};
    });
    ask(client::requests::raw(QStringLiteral("X-TIME")), [this](const QString &reply) {
        m_result.time = client::parseServiceTime(reply);
        askTemperatures();
    });
}

void ServicePoll::askTemperatures()
{
    const qint64 now = m_result.data->greeting.time.toSecsSinceEpoch();
    const ServiceClock clock(zoneOf(m_result.time, m_configuredZone));
    const QDateTime from = clock.localTime(m_historyFrom < 0 ? now + m_historyFrom : m_historyFrom);
    ask(client::requests::temperatures(from, clock.localTime(now)), [this](const auto &history) {
        m_result.history = history;
        if (m_result.data->attributes.size() != m_result.data->drives.size())
            m_result.data.reset();
        end();
    });
}

void ServicePoll::end()
{
    m_conversation.close();
    m_result.seconds = double(m_clock.elapsed()) / 1000;
    if (const auto finished = std::exchange(m_finished, nullptr))
        finished(std::move(m_result));
}

} // namespace web
