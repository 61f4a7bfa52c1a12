// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

#include <QMutex>
#include <QStringList>
#include <QWaitCondition>

#include <utility>

/// The answers of a service manager.
struct Script
{
    bool installed = true;
    ServiceOutcome outcome = {}; ///< of every request except a control
    ControlOutcome controlling = {true, {}, ServiceState::Stopped};
    QVector<ServiceState> states = {}; ///< one for each query; the last is repeated
    QVector<quint32> controls = {};    ///< delivered by the dispatcher after the start
    ServiceView view = {};
};

/// A service manager that answers by a script and records the requests.
class FakeServiceManager : public ServiceManager
{
public:
    explicit FakeServiceManager(Script script)
        : m_script(std::move(script))
    {}

    QStringList requests;           ///< without the dispatcher's requests
    QVector<bool> carriedOut;       ///< the client's result for each control
    QVector<ServiceStatus> reports; ///< guarded by m_mutex until the dispatcher has ended

    [[nodiscard]] QString programPath() const override { return "/opt/halvex/service"; }
    [[nodiscard]] bool isInstalled(const QString &) override { return m_script.installed; }

    ServiceOutcome install(const ServiceDefinition &service) override
    {
        const QStringList definition{"install",           service.name,    service.description,
                                     service.programPath, service.account, service.password};
        requests << definition.join(QLatin1Char('|'));
        return m_script.outcome;
    }

    ServiceOutcome uninstall(const QString &name) override
    {
        requests << "uninstall|" + name;
        return m_script.outcome;
    }

    ServiceOutcome start(const QString &, const QStringList &) override { return m_script.outcome; }

    [[nodiscard]] std::optional<ServiceState> state(const QString &) override
    {
        if (m_script.states.isEmpty())
            return std::nullopt;
        return m_script.states.size() > 1 ? m_script.states.takeFirst() : m_script.states.first();
    }

    [[nodiscard]] ServiceView view(const QString &) override { return m_script.view; }

    ControlOutcome control(const QString &, quint32 code) override
    {
        requests << "control|" + QString::number(code);
        return m_script.controlling;
    }

    ServiceOutcome runDispatcher(const QString &, RunMode mode, ServiceClient &client) override
    {
        if (!m_script.outcome.ok())
            return m_script.outcome;
        if (mode == RunMode::Service)
            client.started({});
        for (const quint32 code : qAsConst(m_script.controls))
            carriedOut << client.controlRequested(code);
        QMutexLocker lock(&m_mutex);
        while (reports.isEmpty() || reports.last().state != ServiceState::Stopped)
            m_reported.wait(&m_mutex);
        return {};
    }

    void reportStatus(const ServiceStatus &status) override
    {
        const QMutexLocker lock(&m_mutex);
        reports << status;
        m_reported.wakeAll();
    }

private:
    Script m_script;
    QMutex m_mutex;
    QWaitCondition m_reported;
};
