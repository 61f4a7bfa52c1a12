// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

#include <QMutex>
#include <QThread>
#include <QWaitCondition>

class QtServiceControllerHandler;

/// Runs the service control dispatcher and passes its control requests to the main thread.
class HandlerThread : public QThread, private ServiceClient
{
    Q_OBJECT
public:
    HandlerThread(ServiceManager &manager, QString serviceName, ServiceManager::RunMode mode,
                  QtServiceControllerHandler &handler);

    /// Waits until the manager has started the service. Fails with the reason if the dispatcher has ended
    /// before.
    ServiceOutcome waitUntilStarted();

protected:
    void run() override;

private:
    void started(const QStringList &arguments) override;
    bool controlRequested(quint32 code) override;

    ServiceManager &m_manager;
    const QString m_serviceName;
    const ServiceManager::RunMode m_mode;
    QtServiceControllerHandler &m_handler;

    QMutex m_mutex; // guards all below
    QWaitCondition m_decided;
    bool m_started = false;
    bool m_ended = false;
    ServiceOutcome m_outcome;
};
