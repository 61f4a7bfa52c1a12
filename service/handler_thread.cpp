// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/handler_thread.h"

#include "service/controller_handler.h"
#include "service/logging.h"

#include <QMutexLocker>

#include <utility>

HandlerThread::HandlerThread(ServiceManager &manager, QString serviceName, ServiceManager::RunMode mode,
                             QtServiceControllerHandler &handler)
    : m_manager(manager)
    , m_serviceName(std::move(serviceName))
    , m_mode(mode)
    , m_handler(handler)
{}

ServiceOutcome HandlerThread::waitUntilStarted()
{
    QMutexLocker lock(&m_mutex);
    while (!m_started && !m_ended)
        m_decided.wait(&m_mutex);
    return m_started ? ServiceOutcome() : m_outcome;
}

void HandlerThread::run()
{
    const ServiceOutcome outcome = m_manager.runDispatcher(m_serviceName, m_mode, *this);
    if (!outcome.ok())
        qCInfo(lcService, "No control requests: %s", qUtf8Printable(outcome.text));
    const QMutexLocker lock(&m_mutex);
    m_ended = true;
    m_outcome = outcome;
    m_decided.wakeAll();
}

void HandlerThread::started(const QStringList &)
{
    {
        const QMutexLocker lock(&m_mutex);
        m_started = true;
        m_decided.wakeAll();
    }
    m_handler.deliver(QtServiceControllerHandler::kStartCode);
}

bool HandlerThread::controlRequested(quint32 code)
{
    return m_handler.deliver(code);
}
