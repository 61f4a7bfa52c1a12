// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/conversation.h"

#include <QRegularExpression>

namespace client {

namespace {

constexpr std::chrono::milliseconds kRetryInterval{200};
constexpr int kQuotedCharacters = 120;

bool canBecomeReady(FailureKind kind)
{
    switch (kind) {
    case FailureKind::Unreachable:
    case FailureKind::TimedOut:
    case FailureKind::Closed:
    case FailureKind::Detecting:
    case FailureKind::Paused:
        return true;
    case FailureKind::NotUnderstood:
    case FailureKind::Refused:
        return false;
    }
    return false;
}

Result<Greeting> greetingOf(const QString &firstLine)
{
    if (auto failure = refusal(firstLine))
        return *failure;
    if (auto greeting = parseGreeting(firstLine))
        return *greeting;
    // Not quoted: a greeting that almost fits holds the mail password.
    return Failure{FailureKind::NotUnderstood, QStringLiteral("its greeting does not fit the protocol")};
}

} // namespace

std::optional<Failure> refusal(const QString &reply)
{
    static const QRegularExpression kIndexError(QStringLiteral("\\A([A-Z]+)_ERR,\\[(.*)\\]\\z"));
    if (reply == QLatin1String("DETECTING"))
        return Failure{FailureKind::Detecting, QStringLiteral("the service is still detecting drives")};
    if (reply == QLatin1String("PAUSED"))
        return Failure{FailureKind::Paused, QStringLiteral("the service is paused")};
    if (reply == QLatin1String("UNKNOWN COMMAND - Command list:"))
        return Failure{FailureKind::Refused, QStringLiteral("the service does not accept this command")};
    if (reply == QLatin1String("ERR"))
        return Failure{FailureKind::Refused, QStringLiteral("the service could not read the request")};
    const auto match = kIndexError.match(reply);
    if (match.hasMatch())
        return Failure{FailureKind::Refused,
                       QStringLiteral("the service has no drive %1").arg(visible(match.captured(2)))};
    static const QRegularExpression kExtensionError(QStringLiteral("\\AX-[A-Z]+_ERR,(.*)\\z"));
    const auto extension = kExtensionError.match(reply);
    if (extension.hasMatch())
        return Failure{FailureKind::Refused, visible(extension.captured(1), kQuotedCharacters)};
    return std::nullopt;
}

Failure notUnderstood(const QString &reply)
{
    return {
        FailureKind::NotUnderstood,
        QStringLiteral("the reply does not fit the request: \"%1\"").arg(visible(reply, kQuotedCharacters))};
}

Conversation::Conversation(const Endpoint &endpoint, Milliseconds timeout, QObject *parent)
    : QObject(parent)
    , m_connection(endpoint)
    , m_timeout(timeout)
{
    m_next.setSingleShot(true);
    connect(&m_next, &QTimer::timeout, this, &Conversation::proceed);
    connect(&m_connection, &Connection::lineArrived, this, &Conversation::takeLine);
    connect(&m_connection, &Connection::failed, this, &Conversation::fail);
}

void Conversation::greet(std::function<void(const Result<Greeting> &)> handler)
{
    const auto take = [this, handler = std::move(handler)](const Result<QString> &reply) {
        if (reply)
            handler(m_greeting.value_or(Greeting()));
        else
            handler(reply.failure());
    };
    enqueue({{}, {}, false, false, take});
}

void Conversation::waitUntilReady(Milliseconds limit, std::function<void(const Failure &)> waiting)
{
    m_readyLimit = limit;
    m_waiting = std::move(waiting);
}

void Conversation::close()
{
    m_next.stop();
    m_jobs.clear();
    m_state = State::Closed;
    m_connection.close();
}

void Conversation::enqueue(Job job)
{
    m_jobs.enqueue(std::move(job));
    if (m_state == State::Closed && m_readyLimit && m_jobs.size() == 1)
        m_readyDeadline.setRemainingTime(*m_readyLimit);
    if (!m_next.isActive())
        m_next.start(0);
}

void Conversation::proceed()
{
    if (m_jobs.isEmpty() || m_state == State::Connecting || m_state == State::Asking)
        return;
    if (m_state == State::Closed) {
        m_state = State::Connecting;
        m_connection.open(m_timeout);
        return;
    }
    const Job &job = m_jobs.head();
    if (!job.hasReply) {
        if (!job.line.isEmpty())
            m_connection.sendWithoutReply(job.line, m_timeout);
        finish(QString());
        return;
    }
    m_state = State::Asking;
    m_connection.ask(job.line, job.allowance.count() > 0 ? job.allowance : m_timeout);
}

void Conversation::takeLine(const QString &line)
{
    if (m_state == State::Connecting)
        takeFirstLine(line);
    else
        finish(line);
}

void Conversation::takeFirstLine(const QString &line)
{
    Result<Greeting> greeting = greetingOf(line);
    // A service that is busy answers some lines, so a raw line is sent whatever the first line is.
    const bool isAnswered = greeting || (m_jobs.head().isRaw && !m_readyLimit);
    if (!isAnswered) {
        m_connection.close();
        fail(greeting.failure());
        return;
    }
    if (greeting)
        m_greeting = *std::move(greeting);
    m_state = State::Ready;
    proceed();
}

void Conversation::finish(const Result<QString> &reply)
{
    m_state = State::Ready;
    const Job job = m_jobs.dequeue();
    if (!m_jobs.isEmpty())
        m_next.start(0);
    job.take(reply);
}

void Conversation::fail(const Failure &failure)
{
    const bool wasConnecting = m_state == State::Connecting;
    m_state = State::Closed;
    if (m_jobs.isEmpty() || (wasConnecting && retry(failure)))
        return;
    m_next.stop();
    const QQueue<Job> jobs = std::exchange(m_jobs, {});
    for (const Job &job : jobs)
        job.take(failure);
}

bool Conversation::retry(const Failure &failure)
{
    if (!m_readyLimit || !canBecomeReady(failure.kind) ||
        m_readyDeadline.remainingTime() <= kRetryInterval.count())
        return false;
    if (auto waiting = std::exchange(m_waiting, {}))
        waiting(failure);
    m_next.start(kRetryInterval);
    return true;
}

} // namespace client
