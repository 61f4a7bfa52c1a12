// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/service_action.h"

#include "client/columns.h"
#include "client/documents.h"
#include "client/requests.h"
#include "client/settings_table.h"
#include "web/mail_transcript.h"
#include "web/routes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QThreadPool>

#include <algorithm>
#include <utility>

namespace web {

namespace {

using namespace std::chrono_literals;
using client::Failure;
using client::FailureKind;

constexpr auto kTimeout = 10s;
constexpr auto kHistoryTimeout = 60s;

int statusOf(FailureKind kind)
{
    switch (kind) {
    case FailureKind::TimedOut:
        return 504;
    case FailureKind::Detecting:
    case FailureKind::Paused:
        return 503;
    case FailureKind::Refused:
        return 409;
    case FailureKind::Unreachable:
    case FailureKind::Closed:
    case FailureKind::NotUnderstood:
        break;
    }
    return 502;
}

bool isRunning(const QVector<client::ScanStatus> &scans, qint32 drive)
{
    return std::any_of(scans.cbegin(), scans.cend(), [drive](const client::ScanStatus &scan) {
        return scan.drive == drive && scan.state == client::ScanState::Running;
    });
}

/// Returns `settings` with `changes` applied. The stored password is for the stored server alone: with
/// another one the service would send it there.
client::Result<ServiceSettings> changed(const ServiceSettings &settings, const QJsonObject &changes)
{
    auto result = client::changeSettings(settings, changes);
    const bool isOtherServer =
        result && (result->smtpServer != settings.smtpServer || result->smtpPort != settings.smtpPort);
    if (isOtherServer && !settings.smtpPass.isEmpty() && !changes.contains(QStringLiteral("smtpPass")))
        return Failure{FailureKind::Refused,
                       QStringLiteral("another mail server or port needs \"smtpPass\" again")};
    return result;
}

} // namespace

ServiceAction::ServiceAction(const ServiceAddress &service, const QTimeZone &zone, ServiceWork work,
                             Reply reply)
    : m_conversation(service.endpoint, kTimeout)
    , m_zone(zone)
    , m_work(std::move(work))
    , m_reply(std::move(reply))
{
    m_conversation.greet([this](const client::Result<client::Greeting> &greeting) {
        if (greeting)
            std::visit([this](const auto &item) { run(item); }, m_work);
        else
            fail(greeting.failure());
    });
}

template <typename T, typename Take>
void ServiceAction::ask(const client::Request<T> &request, Take take)
{
    m_conversation.ask(request, [this, take](const client::Result<T> &reply) {
        if (reply)
            take(*reply);
        else
            fail(reply.failure());
    });
}

template <typename Proceed>
void ServiceAction::withDrive(const work::Drive &drive, Proceed proceed)
{
    ask(client::requests::allDrives(), [this, drive, proceed](const QVector<client::Drive> &drives) {
        const bool isSame = drive.number < drives.size() && drives.at(drive.number).serial == drive.serial;
        if (isSame)
            proceed(drives.at(drive.number));
        else
            respond(errorResponse(
                409, QStringLiteral("drive %1 of the service is another one now").arg(drive.number)));
    });
}

void ServiceAction::respond(const HttpResponse &response)
{
    m_conversation.close();
    if (const auto reply = std::exchange(m_reply, nullptr))
        reply(response);
    Q_EMIT finished();
}

void ServiceAction::respond(const QJsonDocument &json)
{
    respond(jsonResponse(json));
}

void ServiceAction::fail(const Failure &failure)
{
    respond(errorResponse(statusOf(failure.kind), failure.text));
}

void ServiceAction::respondScans()
{
    ask(client::requests::scans(), [this](const auto &scans) {
        respond(QJsonDocument(client::toArray(client::scanColumns(m_zone), scans)));
    });
}

void ServiceAction::run(const work::StartScan &work)
{
    withDrive(work.drive, [this, work](const client::Drive &drive) {
        const auto range = client::checkedScanRange(drive.capacity, work.first, work.last);
        if (!range) {
            respond(errorResponse(400, range.failure().text));
            return;
        }
        ask(client::requests::scans(), [this, work, range = *range](const auto &scans) {
            if (isRunning(scans, work.drive.number)) {
                respond(errorResponse(409, QStringLiteral("a scan of this drive is running")));
                return;
            }
            ask(client::requests::startScan(work.drive.number, work.block, range.first, range.last),
                [this](const QString &) { respondScans(); });
        });
    });
}

void ServiceAction::run(const work::StopScan &work)
{
    withDrive(work.drive, [this, number = work.drive.number](const client::Drive &) {
        ask(client::requests::stopScan(number), [this](const QString &) { respondScans(); });
    });
}

void ServiceAction::run(const work::SetSchedule &work)
{
    withDrive(work.drive, [this, entry = work.entry](const client::Drive &) {
        ask(client::requests::setSchedule(entry), [this](const auto &schedule) {
            respond(QJsonDocument(client::toArray(client::scheduleColumns(), schedule)));
        });
    });
}

void ServiceAction::run(const work::SetSettings &work)
{
    const auto settings = changed(m_conversation.greeting()->settings, work.changes);
    if (!settings) {
        respond(errorResponse(400, settings.failure().text));
        return;
    }
    ask(client::requests::setSettings(*settings), [this](const QString &) {
        m_conversation.close(); // the settings that count now come with the next greeting
        m_conversation.greet([this](const client::Result<client::Greeting> &greeting) {
            if (greeting)
                respond(QJsonDocument(client::documents::settings(greeting->settings)));
            else
                fail(greeting.failure());
        });
    });
}

void ServiceAction::run(const work::TestMail &work)
{
    const auto settings = changed(m_conversation.greeting()->settings, work.changes);
    if (!settings) {
        respond(errorResponse(400, settings.failure().text));
        return;
    }
    ask(client::requests::testMail(*settings, work.body),
        [this, settings = *settings](const client::MailOutcome &outcome) {
            const QString text = withoutCredentials(outcome.text, settings.smtpPass);
            const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
            QJsonObject object{{QStringLiteral("sent"), outcome.isSent},
                               {QStringLiteral("dialogue"), QJsonArray::fromStringList(lines)}};
            if (!outcome.isSent)
                object.insert(QStringLiteral("error"), lines.value(0));
            respond(QJsonDocument(object));
        });
}

void ServiceAction::run(const work::Refresh &)
{
    ask(client::requests::refresh(), [this](const QString &) {
        respond(QJsonDocument(QJsonObject{{QStringLiteral("ok"), true}}));
    });
}

void ServiceAction::run(const work::Detect &)
{
    ask(client::requests::detect(), [this](const QString &) {
        respond(QJsonDocument(QJsonObject{{QStringLiteral("ok"), true}}));
    });
}

void ServiceAction::run(const work::Acknowledge &work)
{
    const QString line =
        QStringList{QStringLiteral("X-ACK"), work.serial, work.kind, work.id}.join(QStringLiteral("]!["));
    ask(client::requests::raw(line), [this](const QString &reply) {
        if (!reply.startsWith(QLatin1String("X-ACK_OK,"))) {
            const bool isRefusal = reply.startsWith(QLatin1String("X-ACK_ERR,"));
            respond(errorResponse(409, isRefusal ? client::visible(reply.section(QLatin1Char(','), 1), 200)
                                                 : QStringLiteral("the service does not take this command")));
            return;
        }
        ask(client::requests::raw(QStringLiteral("X-ALERTS")), [this](const QString &alerts) {
            const QString prefix = QStringLiteral("X-ALERTS_OK]![");
            respond(QJsonDocument::fromJson(alerts.mid(prefix.size()).toUtf8()));
        });
    });
}

void ServiceAction::run(const work::ReadTemperatures &work)
{
    auto request = client::requests::temperatures(work.from, work.to);
    request.allowance = kHistoryTimeout;
    ask(request, [this, respondTo = work.respond](const client::TemperatureHistory &history) {
        // The reply goes its own way: the connection is not needed any more.
        QThreadPool::globalInstance()->start(
            [reply = std::exchange(m_reply, nullptr), respondTo, history] { reply(respondTo(history)); });
        respond(HttpResponse());
    });
}

} // namespace web
