// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/session.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QRegularExpression>

#include <utility>

namespace client {

namespace {

constexpr std::chrono::milliseconds kRetryPause{200};
constexpr int kQuotedCharacters = 120;

bool mayBecomeReady(FailureKind kind)
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

void pause(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

} // namespace

std::optional<Failure> refusal(const QString &reply)
{
    static const QRegularExpression kIndexError(QStringLiteral("\\A[A-Z]+_ERR,\\[(.*)\\]\\z"));
    if (reply == QLatin1String("DETECTING"))
        return Failure{FailureKind::Detecting, QStringLiteral("the service is still detecting drives")};
    if (reply == QLatin1String("PAUSED"))
        return Failure{FailureKind::Paused, QStringLiteral("the service is paused")};
    if (reply == QLatin1String("UNKNOWN COMMAND - Command list:"))
        return Failure{FailureKind::Refused, QStringLiteral("the service does not take this command")};
    if (reply == QLatin1String("ERR"))
        return Failure{FailureKind::Refused, QStringLiteral("the service could not read the request")};
    const auto match = kIndexError.match(reply);
    if (match.hasMatch()) {
        return Failure{
            FailureKind::Refused,
            QStringLiteral("the service has no drive or volume %1").arg(visible(match.captured(1)))};
    }
    return std::nullopt;
}

Failure notUnderstood(const QString &reply)
{
    return {FailureKind::NotUnderstood,
            QStringLiteral("the reply does not fit: \"%1\"").arg(visible(reply, kQuotedCharacters))};
}

Result<Greeting> greetingOf(const QString &firstLine)
{
    if (auto failure = refusal(firstLine))
        return *failure;
    if (auto greeting = parseGreeting(firstLine))
        return *greeting;
    // Not quoted: a greeting that almost fits holds the mail password.
    return Failure{FailureKind::NotUnderstood, QStringLiteral("its greeting does not fit")};
}

Session::Session(Endpoint endpoint, Milliseconds timeout)
    : m_connection(std::move(endpoint))
    , m_timeout(timeout)
{}

Result<QString> Session::await()
{
    std::optional<Result<QString>> result;
    QEventLoop loop;
    QObject::connect(&m_connection, &Connection::lineArrived, &loop, [&](const QString &text) {
        result = Result<QString>(text);
        loop.quit();
    });
    QObject::connect(&m_connection, &Connection::failed, &loop, [&](const Failure &failure) {
        result = Result<QString>(failure);
        loop.quit();
    });
    loop.exec();
    return result.value_or(Failure{FailureKind::Closed, QStringLiteral("interrupted")});
}

Result<QString> Session::connectToService()
{
    m_connection.open(m_timeout);
    return await();
}

Result<Greeting> Session::start()
{
    const Result<QString> line = connectToService();
    if (!line)
        return line.failure();
    return greetingOf(*line);
}

Result<Greeting> Session::startWhenReady(Milliseconds patience,
                                         const std::function<void(const Failure &)> &waiting)
{
    QElapsedTimer elapsed;
    elapsed.start();
    for (bool isFirst = true;; isFirst = false) {
        Result<Greeting> greeting = start();
        if (greeting || !mayBecomeReady(greeting.failure().kind) ||
            elapsed.elapsed() + kRetryPause.count() >= patience.count())
            return greeting;
        if (isFirst)
            waiting(greeting.failure());
        pause(kRetryPause);
    }
}

Result<QString> Session::ask(const QString &request, std::optional<Milliseconds> timeout)
{
    m_connection.ask(request, timeout.value_or(m_timeout));
    return await();
}

void Session::tell(const QString &request)
{
    m_connection.tell(request, m_timeout);
}

} // namespace client
