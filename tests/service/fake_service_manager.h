// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/event_log.h"
#include "platform/service_manager.h"

#include <QMutex>
#include <QMutexLocker>
#include <QVector>
#include <QWaitCondition>

/// A service manager that answers as it is told and keeps what it was asked.
class FakeServiceManager : public ServiceManager
{
public:
    struct Script
    {
        bool installed = true;
        ServiceOutcome installing;
        ServiceOutcome uninstalling;
        ControlOutcome controlling{true, {}, ServiceState::Stopped};
        QVector<ServiceState> states; ///< answered one a question, the last one again and again
        ServiceOutcome dispatching;
        QVector<quint32> controls; ///< what the dispatcher delivers after the start
    };

    explicit FakeServiceManager(Script script)
        : m_script(std::move(script))
    {}

    QStringList requests;           ///< the dispatcher's own apart
    QVector<bool> carriedOut;       ///< the client's answers to the controls
    QVector<ServiceStatus> reports; ///< guarded by m_mutex until the dispatcher has ended

    [[nodiscard]] QString programPath() const override { return QStringLiteral("/opt/halvex/service"); }
    [[nodiscard]] bool isInstalled(const QString &) override { return m_script.installed; }

    ServiceOutcome install(const ServiceDefinition &service) override
    {
        requests << QStringList{QStringLiteral("install"),
                                service.name,
                                service.description,
                                service.programPath,
                                service.account,
                                service.password,
                                service.startup == ServiceStartup::Automatic ? QStringLiteral("automatic")
                                                                             : QStringLiteral("manual")}
                        .join(QLatin1Char('|'));
        return m_script.installing;
    }

    ServiceOutcome uninstall(const QString &name) override
    {
        requests << QStringLiteral("uninstall|") + name;
        return m_script.uninstalling;
    }

    ServiceOutcome start(const QString &name, const QStringList &arguments) override
    {
        requests << QStringLiteral("start|") + name + QLatin1Char('|') + arguments.join(QLatin1Char(' '));
        return {};
    }

    [[nodiscard]] std::optional<ServiceState> state(const QString &) override
    {
        if (m_script.states.isEmpty())
            return std::nullopt;
        return m_script.states.size() > 1 ? m_script.states.takeFirst() : m_script.states.first();
    }

    ControlOutcome control(const QString &, quint32 code) override
    {
        requests << QStringLiteral("control|") + QString::number(code);
        return m_script.controlling;
    }

    ServiceOutcome runDispatcher(const QString &, RunMode mode, ServiceClient &client) override
    {
        if (!m_script.dispatching.ok())
            return m_script.dispatching;
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

class RecordingEventLog : public EventLog
{
public:
    QVector<Event> events;

    void report(const Event &event) override { events << event; }
};
