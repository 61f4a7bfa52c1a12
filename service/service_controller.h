// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <functional>

/// Returns the account in the service manager's form: of this machine unless `wanted` names a domain, and
/// empty for the local system.
[[nodiscard]] QString installationAccount(const QString &wanted);

/// Installs, removes, controls and queries a service by its name, from another process.
class QtServiceController
{
public:
    using Sleep = std::function<void(std::chrono::milliseconds)>;

    /// `sleep` waits between two queries of a service that is stopping.
    QtServiceController(ServiceManager &manager, QString name, Sleep sleep);

    [[nodiscard]] bool isInstalled() const;
    [[nodiscard]] ServiceView view() const;

    ServiceOutcome install(const QString &description, const QString &account, const QString &password);
    ServiceOutcome uninstall();
    ServiceOutcome start(const QStringList &arguments = {});

    /// Stops the service. Fails if it has not stopped after 2 s.
    ServiceOutcome stop();
    ServiceOutcome pause();
    ServiceOutcome resume();

    /// Sends a custom command, 0 to 127. Fails for another number.
    ServiceOutcome sendCommand(int command);

private:
    ServiceOutcome send(quint32 code);

    ServiceManager &m_manager;
    const QString m_name;
    const Sleep m_sleep;
};
