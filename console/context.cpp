// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/context.h"

#include <QEventLoop>
#include <QTimer>

#include <utility>

Context::Context(Arguments arguments, Output &output)
    : m_arguments(std::move(arguments))
    , m_output(output)
    , m_conversation(m_arguments.endpoints.first(), m_arguments.timeout)
    , m_style(outputStyle())
{
    if (!m_arguments.wait)
        return;
    m_conversation.waitUntilReady(*m_arguments.wait, [this](const client::Failure &failure) {
        const QString name = displayName(m_conversation.endpoint());
        m_output.note(QStringLiteral("%1: %2; waiting ...").arg(name, failure.text));
    });
}

client::Greeting Context::greeting()
{
    return valueOf(client::awaitGreeting(m_conversation));
}

QTimeZone Context::zone()
{
    if (!m_zone) {
        const auto clock = tryAsk(client::requests::serviceTime());
        m_zone = clock ? clock->time.timeZone() : QTimeZone::systemTimeZone();
    }
    return *m_zone;
}

void Context::pause(std::chrono::milliseconds time)
{
    if (m_conversation.endpoint().isLocal())
        m_conversation.close();
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

void Context::refuse(const QString &text) const
{
    throw CommandFailure{kExitUsage, text};
}

qint32 Context::driveArgument(int position) const
{
    const QString text = m_arguments.positionals.value(position);
    const auto number = parseDriveNumber(text);
    if (!number)
        refuse(QStringLiteral("'%1' is not a drive number").arg(text));
    return *number;
}

void Context::show(const QJsonObject &document, const QStringList &lines)
{
    if (wantsJson())
        m_output.print(QJsonDocument(document));
    else
        m_output.print(lines);
}

void Context::confirm(const QString &text)
{
    if (wantsJson())
        m_output.print(QJsonDocument(QJsonObject{{QStringLiteral("ok"), true}}));
    else
        m_output.note(text);
}

CommandFailure Context::failureOf(const client::Failure &failure) const
{
    const bool isRefusal = failure.kind == client::FailureKind::Refused;
    const QString text = displayName(m_conversation.endpoint()) + QStringLiteral(": ") + failure.text;
    return {isRefusal ? kExitUsage : kExitNoAnswer, text};
}
