// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/host_lookup.h"

#include <QThread>

#include <atomic>
#include <mutex>

namespace {

std::atomic<int> runningThreads{0};

} // namespace

/// Shared with the threads of the lookups, which may outlive the object. The mutex guards `object`.
struct HostLookup::Receiver
{
    std::mutex mutex;
    HostLookup *object = nullptr; ///< null once destroyed
};

HostLookup::HostLookup(QObject *parent)
    : QObject(parent)
    , m_receiver(std::make_shared<Receiver>())
{
    m_receiver->object = this;
}

HostLookup::~HostLookup()
{
    const std::lock_guard lock(m_receiver->mutex);
    m_receiver->object = nullptr;
}

void HostLookup::start(const QString &name)
{
    const int lookup = ++m_current;
    ++runningThreads;
    QThread *const thread = QThread::create([name, lookup, receiver = m_receiver] {
        const QHostInfo info = QHostInfo::fromName(name);
        {
            const std::lock_guard lock(receiver->mutex);
            if (HostLookup *const object = receiver->object)
                QMetaObject::invokeMethod(
                    object, [object, lookup, info] { object->deliver(lookup, info); }, Qt::QueuedConnection);
        }
        --runningThreads;
    });
    connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    thread->start();
}

void HostLookup::deliver(int lookup, const QHostInfo &info)
{
    if (lookup == m_current)
        Q_EMIT finished(info);
}

bool HostLookup::isAnyRunning()
{
    return runningThreads > 0;
}
