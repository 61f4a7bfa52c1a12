// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/application.h"

#include "web/logging.h"
#include "web/service_action.h"
#include "web/site.h"

#include <QThreadPool>

#include <algorithm>
#include <utility>

namespace web {

namespace {

constexpr int kWorkers = 2;      ///< threads for what takes long: hashing, and histories of years
constexpr int kMostActions = 64; ///< at the same time

} // namespace

Application::Application(Configuration configuration, const QString &stateFolder)
    : m_configuration(std::move(configuration))
    , m_history(stateFolder)
    , m_poller(m_configuration)
    , m_server(m_configuration, [this](const HttpRequest &request) { return handle(request); })
{
    QThreadPool::globalInstance()->setMaxThreadCount(kWorkers);
    m_snapshots.set(m_poller.snapshot());
    connect(&m_poller, &Poller::polled, this, &Application::take);
}

Application::~Application()
{
    m_server.stop(); // its handlers start what runs on the pool
    QThreadPool::globalInstance()->waitForDone();
}

Result<void> Application::start()
{
    // Without its history the page is still worth having.
    if (auto opened = m_history.open(); !opened)
        qCCritical(lcWeb).noquote() << QStringLiteral("no history is kept: %1").arg(opened.failure().text);
    if (auto started = m_server.start(); !started)
        return started;
    m_recorder = std::make_unique<HistoryRecorder>(m_history, m_configuration.retentionDays);
    m_poller.start();
    return {};
}

QString Application::url() const
{
    const QHostAddress &address = m_configuration.listen.address;
    const bool isIpv6 = address.protocol() == QAbstractSocket::IPv6Protocol;
    const QString host = isIpv6 ? QStringLiteral("[%1]").arg(address.toString()) : address.toString();
    const bool isTls = !m_configuration.tlsCertificate.isEmpty();
    return QStringLiteral("%1://%2:%3%4")
        .arg(isTls ? QStringLiteral("https") : QStringLiteral("http"), host)
        .arg(m_server.port())
        .arg(m_configuration.basePath);
}

Answer Application::handle(const HttpRequest &request)
{
    const Site site{m_configuration, m_server.port(),   QStringLiteral(HALVEX_VERSION),
                    m_sessions,      m_loginLimit,      m_history,
                    *this,           m_snapshots.get(), QDateTime::currentDateTimeUtc()};
    return answer(request, site);
}

void Application::take(const std::shared_ptr<const ServiceSnapshot> &before,
                       const std::shared_ptr<const ServiceSnapshot> &after)
{
    m_snapshots.set(m_poller.snapshot());
    m_recorder->record(before, after);
    m_server.publish(after->name);
}

void Application::start(const QString &service, const ServiceWork &work, const Reply &reply)
{
    QMetaObject::invokeMethod(
        this, [=] { startAction(service, work, reply); }, Qt::QueuedConnection);
}

void Application::startAction(const QString &service, const ServiceWork &work, const Reply &reply)
{
    const auto address =
        std::find_if(m_configuration.services.cbegin(), m_configuration.services.cend(),
                     [&service](const ServiceAddress &candidate) { return candidate.name == service; });
    if (address == m_configuration.services.cend() || m_actions >= kMostActions) {
        reply(errorResponse(503, QStringLiteral("too many requests to services are in progress")));
        return;
    }
    ++m_actions;
    const int index = int(address - m_configuration.services.cbegin());
    const bool isChange = !std::holds_alternative<work::ReadTemperatures>(work);
    auto *action = new ServiceAction(*address, m_poller.zone(index), work, reply);
    action->setParent(this);
    connect(action, &ServiceAction::finished, this, [this, action, service, isChange] {
        --m_actions;
        action->deleteLater();
        if (isChange)
            m_poller.pollNow(service);
    });
}

} // namespace web
