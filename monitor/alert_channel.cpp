// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_channel.h"

#include "monitor/alert_text.h"
#include "monitor/json_fields.h"
#include "monitor/logging.h"

#include <utility>

namespace {

/// A clock that is set forward must not delay a retry for as long as the timer was set.
constexpr std::chrono::milliseconds kLongestTimer = std::chrono::minutes(1);

} // namespace

AlertChannel::AlertChannel(const QString &name, std::unique_ptr<Transport> transport, Clock clock)
    : m_name(name)
    , m_transport(std::move(transport))
    , m_clock(std::move(clock))
    , m_fault(QStringLiteral("The alert channel ") + name)
{
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &AlertChannel::resume);
}

void AlertChannel::setOn(bool isOn)
{
    m_isOn = isOn;
}

void AlertChannel::add(const OutboxEntry &entry)
{
    if (m_outbox.add(entry))
        qCWarning(lcMonitor).noquote()
            << "The alert channel" << m_name << "is full: the oldest message is dropped";
}

void AlertChannel::resume()
{
    if (m_isSending)
        return;
    if (!m_tests.isEmpty()) {
        const Test test = m_tests.takeFirst();
        send(test.entry, test.done);
        return;
    }
    const QDateTime now = m_clock();
    if (const int dropped = m_outbox.dropExpired(now)) {
        qCWarning(lcMonitor).noquote() << "The alert channel" << m_name << "drops" << dropped
                                       << "messages that could not be delivered for 24 hours";
        Q_EMIT changed();
    }
    if (!m_isOn || m_outbox.isEmpty())
        return;
    const std::chrono::milliseconds waiting = m_outbox.waitingTime(now);
    if (waiting.count() > 0)
        m_retry.start(std::min(waiting, kLongestTimer));
    else
        sendFirst();
}

void AlertChannel::sendFirst()
{
    const quint64 id = m_outbox.first().id;
    send(m_outbox.first(), [this, id](const Result<void> &result) {
        if (result)
            m_outbox.delivered(id);
        else
            m_outbox.failed(id, m_clock());
    });
}

void AlertChannel::test(const OutboxEntry &entry, Transport::Done done)
{
    m_tests << Test{entry, std::move(done)};
    resume();
}

void AlertChannel::send(const OutboxEntry &entry, const Transport::Done &done)
{
    m_isSending = true;
    m_retry.stop();
    m_transport->send(entry, [this, done](const Result<void> &result) {
        m_isSending = false;
        note(result);
        done(result);
        Q_EMIT changed();
        resume();
    });
}

void AlertChannel::note(const Result<void> &result)
{
    const QDateTime now = m_clock();
    (result ? m_outcome.lastSuccess : m_outcome.lastFailure) = now;
    m_outcome.reason = result ? QString() : result.failure().text;
    const QString text = result ? m_fault.succeeded() : m_fault.failed(m_outcome.reason, now.toLocalTime());
    if (!text.isEmpty())
        qCWarning(lcMonitor).noquote() << text;
}

QJsonObject AlertChannel::toJson() const
{
    return {{QStringLiteral("outbox"), m_outbox.toJson()},
            {QStringLiteral("lastSuccess"), timeValue(m_outcome.lastSuccess)},
            {QStringLiteral("lastFailure"), timeValue(m_outcome.lastFailure)},
            {QStringLiteral("reason"), m_outcome.reason}};
}

void AlertChannel::restore(const QJsonObject &json)
{
    m_outbox = Outbox::fromJson(json.value(QLatin1String("outbox")).toObject());
    m_outcome.lastSuccess = json_fields::time(json, "lastSuccess");
    m_outcome.lastFailure = json_fields::time(json, "lastFailure");
    m_outcome.reason = json.value(QLatin1String("reason")).toString();
    if (!m_outcome.reason.isEmpty())
        static_cast<void>(m_fault.failed(m_outcome.reason, m_outcome.lastFailure.toLocalTime()));
}
