// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/service_controller.h"

#include "service/system_warning.h"

#include <utility>

QString installationAccount(const QString &wanted)
{
    if (wanted.isEmpty())
        return wanted;
    const QString account = wanted.contains(QLatin1Char('\\')) ? wanted : QStringLiteral(".\\") + wanted;
    return account.endsWith(QLatin1String("\\LocalSystem")) ? QString() : account;
}

QtServiceController::QtServiceController(ServiceManager &manager, QString name, Sleep sleep)
    : m_manager(manager)
    , m_name(std::move(name))
    , m_sleep(std::move(sleep))
{}

bool QtServiceController::isInstalled() const
{
    return m_manager.isInstalled(m_name);
}

ServiceView QtServiceController::view() const
{
    return m_manager.view(m_name);
}

ServiceOutcome QtServiceController::install(const QString &description, const QString &account,
                                            const QString &password)
{
    ServiceDefinition service;
    service.name = m_name;
    service.description = description;
    service.programPath = m_manager.programPath();
    service.account = installationAccount(account);
    if (!service.account.isEmpty())
        service.password = password;
    return m_manager.install(service);
}

ServiceOutcome QtServiceController::uninstall()
{
    return m_manager.uninstall(m_name);
}

ServiceOutcome QtServiceController::start(const QStringList &arguments)
{
    return m_manager.start(m_name, arguments);
}

ServiceOutcome QtServiceController::stop()
{
    constexpr int kQueries = 10;
    constexpr std::chrono::milliseconds kQueryInterval(200);

    const ControlOutcome outcome = m_manager.control(m_name, service_control::kStop);
    if (outcome.opened && !outcome.sent.ok())
        systemWarning("stopping", outcome.sent.text);
    if (!outcome.opened || !outcome.sent.ok())
        return outcome.sent;

    ServiceState state = outcome.state;
    for (int query = 0; query < kQueries && state != ServiceState::Stopped; ++query) {
        m_sleep(kQueryInterval);
        state = m_manager.state(m_name).value_or(state);
    }
    if (state != ServiceState::Stopped)
        return {system_error::kServiceRequestTimeout, QStringLiteral("The service did not stop in time")};
    return {};
}

ServiceOutcome QtServiceController::pause()
{
    return send(service_control::kPause);
}

ServiceOutcome QtServiceController::resume()
{
    return send(service_control::kContinue);
}

ServiceOutcome QtServiceController::sendCommand(int command)
{
    constexpr int kLastCommand = int(service_control::kLastUserCode - service_control::kFirstUserCode);
    if (command < 0 || command > kLastCommand)
        return {system_error::kInvalidParameter, QStringLiteral("Custom commands are numbered 0 to 127")};
    return send(service_control::kFirstUserCode + quint32(command));
}

ServiceOutcome QtServiceController::send(quint32 code)
{
    return m_manager.control(m_name, code).sent;
}
