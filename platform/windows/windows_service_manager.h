// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

#include <QMutex>

#include <windows.h>

/// The service control manager of this machine.
class WindowsServiceManager : public ServiceManager
{
public:
    [[nodiscard]] QString programPath() const override;
    [[nodiscard]] bool isInstalled(const QString &name) override;
    ServiceOutcome install(const ServiceDefinition &service) override;
    ServiceOutcome uninstall(const QString &name) override;
    ServiceOutcome start(const QString &name, const QStringList &arguments) override;
    [[nodiscard]] std::optional<ServiceState> state(const QString &name) override;
    [[nodiscard]] ServiceView view(const QString &name) override;
    ControlOutcome control(const QString &name, quint32 code) override;

    /// In application mode the manager cannot reach the program, so nothing is delivered.
    ServiceOutcome runDispatcher(const QString &name, RunMode mode, ServiceClient &client) override;
    void reportStatus(const ServiceStatus &status) override;

private:
    static void WINAPI serviceMain(DWORD argumentCount, wchar_t **arguments);
    static void WINAPI handleControl(DWORD code);
    void sendStatus();

    QString m_name;
    ServiceClient *m_client = nullptr;
    QMutex m_mutex; // guards all below
    SERVICE_STATUS_HANDLE m_statusHandle = nullptr;
    ServiceStatus m_status;
};
