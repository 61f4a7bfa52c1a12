// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>

/// The account to install under for the one that was asked for: this machine's unless it names another, and
/// empty for the local system.
[[nodiscard]] QString installationAccount(const QString &wanted);

/// Installs, removes, controls and asks about a service by its name, from outside of it.
class QtServiceController
{
public:
    using Sleep = std::function<void(std::chrono::milliseconds)>;

    /// `sleep` waits between two looks at a service that is stopping.
    QtServiceController(ServiceManager &manager, QString name, Sleep sleep);

    [[nodiscard]] bool isInstalled() const;
    [[nodiscard]] bool isRunning() const;

    ServiceOutcome install(const QString &description, ServiceStartup startup, const QString &account,
                           const QString &password);
    ServiceOutcome uninstall();
    ServiceOutcome start(const QStringList &arguments = {});

    /// Asks the service to stop and waits up to 2 s until it has; an error if it has not.
    ServiceOutcome stop();
    ServiceOutcome pause();
    ServiceOutcome resume();

    /// A custom command, 0 to 127; another number is refused.
    ServiceOutcome sendCommand(int command);

private:
    ServiceOutcome send(quint32 code);

    ServiceManager &m_manager;
    const QString m_name;
    const Sleep m_sleep;
};
