// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/linux/file_descriptor.h"
#include "platform/linux/linux_service_key.h"
#include "platform/service_manager.h"

#include <QMutex>

/// The service of one home directory. It is installed when the directory holds its key; where systemd starts
/// it, it is a unit too. A running service takes its control requests over the directory's control socket.
class LinuxServiceManager : public ServiceManager
{
public:
    LinuxServiceManager(QString home, bool managedBySystemd);

    [[nodiscard]] QString programPath() const override;
    [[nodiscard]] bool isInstalled(const QString &name) override;
    ServiceOutcome install(const ServiceDefinition &service) override;
    ServiceOutcome uninstall(const QString &name) override;
    ServiceOutcome start(const QString &name, const QStringList &arguments) override;
    [[nodiscard]] std::optional<ServiceState> state(const QString &name) override;
    [[nodiscard]] ServiceView view(const QString &name) override;
    ControlOutcome control(const QString &name, quint32 code) override;
    ServiceOutcome runDispatcher(const QString &name, RunMode mode, ServiceClient &client) override;
    void reportStatus(const ServiceStatus &status) override;

private:
    [[nodiscard]] ServiceStatus status() const;

    const QString m_home;
    const bool m_managedBySystemd;
    LinuxServiceKey m_key;
    FileDescriptor m_stopped; // readable once the service has reported that it stopped
    mutable QMutex m_mutex;   // guards m_status
    ServiceStatus m_status;
};
