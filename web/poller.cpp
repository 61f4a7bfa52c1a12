// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/poller.h"

#include "web/logging.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace web {

namespace {

constexpr int kPlaces = 16;                ///< polls at the same time
constexpr int kFailedPlaces = kPlaces / 2; ///< of services whose last poll failed
constexpr qint64 kDay = qint64{24} * 3600;
constexpr int kStartSpacingMs = 20;
constexpr int kRetryMs = 2000;
constexpr int kFirstTries = 60;

ServiceState stateAfter(client::FailureKind kind)
{
    switch (kind) {
    case client::FailureKind::Detecting:
        return ServiceState::Detecting;
    case client::FailureKind::Paused:
        return ServiceState::Paused;
    default:
        return ServiceState::Unreachable;
    }
}

/// Returns whether the service is worth asking before its next interval: while it detects its drives, and in
/// its first minutes, when both programs may have been started together.
bool isSoonReady(const ServiceSnapshot &service)
{
    const bool isNew = !service.data && service.failedPolls < kFirstTries;
    return service.state == ServiceState::Detecting || (service.state == ServiceState::Unreachable && isNew);
}

std::shared_ptr<ServiceSnapshot> unasked(const ServiceAddress &address)
{
    auto service = std::make_shared<ServiceSnapshot>();
    service->name = address.name;
    service->host = address.endpoint.host;
    service->port = address.endpoint.port;
    service->error = QStringLiteral("not asked yet");
    return service;
}

} // namespace

Poller::Poller(const Configuration &configuration)
    : m_configuration(configuration)
{
    auto snapshot = std::make_shared<Snapshot>();
    for (const ServiceAddress &address : configuration.services) {
        auto service = std::make_unique<Service>();
        service->address = address;
        service->timer.setSingleShot(true);
        service->timer.setTimerType(Qt::CoarseTimer);
        const int index = int(m_services.size());
        connect(&service->timer, &QTimer::timeout, this, [this, index] { enqueue(index); });
        m_services.push_back(std::move(service));
        snapshot->services.append(unasked(address));
    }
    m_snapshot = std::move(snapshot);
}

Poller::~Poller() = default;

void Poller::start()
{
    int delay = 0;
    for (const auto &service : m_services) {
        service->timer.start(delay);
        delay += kStartSpacingMs;
    }
}

void Poller::pollNow(const QString &name)
{
    for (int i = 0; i < int(m_services.size()); ++i) {
        if (m_services[size_t(i)]->address.name == name)
            enqueue(i);
    }
}

QTimeZone Poller::zone(int index) const
{
    const Service &service = *m_services[size_t(index)];
    return zoneOf(service.time, service.address.timeZone);
}

void Poller::enqueue(int index)
{
    Service &service = *m_services[size_t(index)];
    if (service.poll) {
        service.wantsAnother = true;
        return;
    }
    if (!std::exchange(service.isQueued, true))
        m_queue.enqueue(index);
    startQueued();
}

std::optional<int> Poller::takeQueued()
{
    if (m_running == kPlaces)
        return std::nullopt;
    const auto failed = std::count_if(m_services.cbegin(), m_services.cend(), [](const auto &service) {
        return service->poll && service->hasFailed;
    });
    const auto next = std::find_if(m_queue.begin(), m_queue.end(), [&](int index) {
        return failed < kFailedPlaces || !m_services[size_t(index)]->hasFailed;
    });
    if (next == m_queue.end())
        return std::nullopt;
    const int index = *next;
    m_queue.erase(next);
    return index;
}

void Poller::startQueued()
{
    while (const auto queued = takeQueued()) {
        const int index = *queued;
        Service &service = *m_services[size_t(index)];
        service.isQueued = false;
        service.timer.start(m_configuration.pollSeconds * 1000);
        ++m_running;
        const qint64 from = service.lastRecord > 0 ? service.lastRecord + 1 : -kDay;
        service.poll = std::make_unique<ServicePoll>(
            service.address, from, [this, index](PollResult result) { take(index, std::move(result)); });
    }
}

void Poller::take(int index, PollResult result)
{
    Service &service = *m_services[size_t(index)];
    service.poll.release()->deleteLater();
    service.hasFailed = !result.data;
    --m_running;

    const std::shared_ptr<const ServiceSnapshot> before = m_snapshot->services.at(index);
    const std::shared_ptr<const ServiceSnapshot> after = next(index, result);
    auto snapshot = std::make_shared<Snapshot>(*m_snapshot);
    snapshot->services[index] = after;
    m_snapshot = std::move(snapshot);
    if (before->error != after->error)
        qCInfo(lcWeb).noquote() << after->name + QStringLiteral(":")
                                << (after->error.isEmpty() ? QStringLiteral("answers") : after->error);
    Q_EMIT polled(before, after);

    if (std::exchange(service.wantsAnother, false))
        enqueue(index);
    else if (isSoonReady(*after))
        service.timer.start(std::min(m_configuration.pollSeconds * 1000, kRetryMs));
    startQueued();
}

std::shared_ptr<ServiceSnapshot> Poller::next(int index, PollResult &result)
{
    Service &service = *m_services[size_t(index)];
    auto after = std::make_shared<ServiceSnapshot>(*m_snapshot->services.at(index));
    after->pollSeconds = result.seconds;
    if (!result.data) {
        after->state = stateAfter(result.failure.kind);
        after->error = result.failure.text;
        // By the time that has passed: a poll besides the interval is not another one that was missed.
        const qint64 sinceAnswer = service.sinceAnswer.isValid() ? service.sinceAnswer.elapsed() : 0;
        const double missed = double(sinceAnswer) / (1000.0 * m_configuration.pollSeconds);
        after->missedPolls = std::max(1, int(std::lround(missed)));
        ++after->failedPolls;
        return after;
    }
    after->state = ServiceState::Ready;
    after->error.clear();
    service.sinceAnswer.start();
    after->missedPolls = 0;
    ++after->answeredPolls;
    after->lastAnswer = QDateTime::currentDateTimeUtc();
    takeHistory(service, result);
    result.data->zone = zoneOf(service.time, service.address.timeZone);
    const qint64 now = result.data->greeting.time.toSecsSinceEpoch();
    for (int drive = 0; drive < result.data->drives.size(); ++drive)
        result.data->temperatures.append(service.temperatures.means(drive, now));
    after->data = std::move(result.data);
    return after;
}

void Poller::takeHistory(Service &service, const PollResult &result)
{
    if (result.time)
        service.time = result.time;
    ServiceClock clock(zoneOf(service.time, service.address.timeZone));
    const qint64 previous = service.lastRecord;
    const qint64 now = result.data->greeting.time.toSecsSinceEpoch();
    for (const client::TemperatureRecord &record : result.history.records) {
        const qint64 time = clock.secondsSinceEpoch(record.time);
        // The service may also send the record before the period.
        if (time <= previous || time > now || !record.temperature)
            continue;
        service.temperatures.add(record.drive, time, *record.temperature);
        service.lastRecord = std::max(service.lastRecord, time);
    }
}

} // namespace web
