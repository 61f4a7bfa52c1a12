// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/command.h"

#include <QHash>

#include <utility>

Context::Context(Arguments arguments, Output &output)
    : m_arguments(std::move(arguments))
    , m_output(output)
    , m_session(m_arguments.endpoints.first(), m_arguments.timeout)
    , m_style(outputStyle())
{}

client::Result<client::Greeting> Context::greet()
{
    if (!m_arguments.has(QStringLiteral("wait")))
        return m_session.start();
    m_output.note(QStringLiteral("waiting for the service at %1 ...").arg(displayName(m_session.endpoint())));
    return m_session.startWhenReady(m_arguments.timeout);
}

std::chrono::milliseconds Context::patience(std::chrono::milliseconds usual) const
{
    return m_arguments.isTimeoutGiven ? m_arguments.timeout : usual;
}

int Context::fail(const client::Failure &failure)
{
    m_output.complain(displayName(m_session.endpoint()) + QStringLiteral(": ") + failure.text);
    return failure.kind == client::FailureKind::Refused ? kExitUsage : kExitNoAnswer;
}

int Context::refuse(const QString &text)
{
    m_output.complain(text);
    return kExitUsage;
}

std::optional<qint32> Context::driveArgument(int position) const
{
    return parseDriveNumber(m_arguments.positionals.value(position));
}

int Context::refuseDrive(int position)
{
    return refuse(QStringLiteral("'%1' is no drive's number").arg(m_arguments.positionals.value(position)));
}

CommandFunction commandFunction(const QString &name)
{
    static const QHash<QString, CommandFunction> kFunctions{
        {QStringLiteral("status"), runStatus},
        {QStringLiteral("smart"), runSmart},
        {QStringLiteral("raw"), runRaw},
    };
    return kFunctions.value(name, nullptr);
}
