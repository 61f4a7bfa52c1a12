// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/controller_handler.h"

#include "service/service_base.h"

#include <QCoreApplication>
#include <QEvent>
#include <QMutexLocker>

namespace {

constexpr int kFirstEventType = 1000;
static_assert(kFirstEventType == QEvent::User);

} // namespace

bool QtServiceControllerHandler::deliver(quint32 code)
{
    QMutexLocker lock(&m_mutex);
    if (m_closed)
        return false;
    const quint64 ticket = ++m_posted;
    QCoreApplication::postEvent(this, new QEvent(QEvent::Type(kFirstEventType + int(code))));
    while (m_handled < ticket && !m_closed)
        m_progress.wait(&m_mutex);
    return m_handled >= ticket;
}

void QtServiceControllerHandler::close()
{
    const QMutexLocker lock(&m_mutex);
    m_closed = true;
    m_progress.wakeAll();
}

void QtServiceControllerHandler::customEvent(QEvent *event)
{
    if (QtServiceBase *service = QtServiceBase::instance())
        service->carryOut(quint32(event->type() - kFirstEventType));
    const QMutexLocker lock(&m_mutex);
    ++m_handled;
    m_progress.wakeAll();
}
