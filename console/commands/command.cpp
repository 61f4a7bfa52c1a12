// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/command.h"

#include "console/client/requests.h"

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
    if (!m_arguments.wait)
        return m_session.start();
    return m_session.startWhenReady(*m_arguments.wait, [this](const client::Failure &failure) {
        m_output.note(
            QStringLiteral("%1: %2; waiting ...").arg(displayName(m_session.endpoint()), failure.text));
    });
}

client::Result<client::Drive> Context::askDrive(qint32 index)
{
    return m_session.query(client::requests::driveInfo(index),
                           [index](const QString &reply) { return client::parseDrive(reply, index); });
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
        {QStringLiteral("info"), runInfo},
        {QStringLiteral("volumes"), runVolumes},
        {QStringLiteral("watch"), runWatch},
        {QStringLiteral("temperatures"), runTemperatures},
        {QStringLiteral("scan status"), runScanStatus},
        {QStringLiteral("scan start"), runScanStart},
        {QStringLiteral("scan stop"), runScanStop},
        {QStringLiteral("schedule show"), runScheduleShow},
        {QStringLiteral("schedule set"), runScheduleSet},
        {QStringLiteral("schedule clear"), runScheduleClear},
        {QStringLiteral("settings show"), runSettingsShow},
        {QStringLiteral("settings set"), runSettingsSet},
        {QStringLiteral("mail-test"), runMailTest},
        {QStringLiteral("users"), runUsers},
        {QStringLiteral("login"), runLogin},
        {QStringLiteral("hosts"), runHosts},
        {QStringLiteral("count"), runCount},
        {QStringLiteral("detect"), runDetect},
        {QStringLiteral("refresh"), runRefresh},
        {QStringLiteral("intervals"), runIntervals},
        {QStringLiteral("raw"), runRaw},
        {QStringLiteral("completion"), runCompletion},
        {QStringLiteral("man"), runMan},
    };
    return kFunctions.value(name, nullptr);
}
