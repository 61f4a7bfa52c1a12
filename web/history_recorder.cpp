// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/history_recorder.h"

#include "web/logging.h"

#include <QDateTime>
#include <QTimer>

#include <cstdlib>

namespace web {

namespace {

constexpr int kMostQueued = 2000; ///< comparisons; a dropped one is made up by the next
constexpr int kRetentionIntervalMs = 24 * 3600 * 1000;
constexpr Timestamp kDay = Timestamp{24} * 3600;
constexpr unsigned long kStopLimitMs = 10000;

} // namespace

/// Lives on the recorder's thread.
class HistoryRecorder::Worker : public QObject
{
public:
    Worker(HistoryStore &store, int retentionDays)
        : m_store(store)
        , m_retentionDays(retentionDays)
        , m_retention(this)
    {
        m_retention.setInterval(kRetentionIntervalMs);
        connect(&m_retention, &QTimer::timeout, this, &Worker::removeOld);
    }

    void start()
    {
        removeOld();
        for (const KnownDrive &drive : m_store.knownDrives())
            m_known[drive.key.service].append(drive);
        m_retention.start();
    }

    void stop()
    {
        m_retention.stop();
        thread()->quit();
    }

    void record(const ServiceSnapshot &before, const ServiceSnapshot &after)
    {
        const Timestamp now = QDateTime::currentSecsSinceEpoch();
        HistoryChanges changes;
        const bool hasNewData = after.data && after.data != before.data;
        if (hasNewData) {
            const QVector<KnownDrive> known = m_known.value(after.name);
            changes = compare(known, known.isEmpty(), after.name, *after.data, now);
        }
        if (const auto event = stateEvent(before, after, now))
            changes.events.append(*event);
        const auto added = m_store.add(changes, now);
        report(added);
        if (added && hasNewData)
            m_known[after.name] = changes.drives;
    }

private:
    void removeOld()
    {
        report(m_store.removeBefore(QDateTime::currentSecsSinceEpoch() - m_retentionDays * kDay));
    }

    /// Logs a failure when it begins and when it has ended.
    void report(const Result<void> &result)
    {
        const QString reason = result ? QString() : result.failure().text;
        if (reason == m_reason)
            return;
        m_reason = reason;
        if (reason.isEmpty())
            qCWarning(lcWeb) << "the history is written again";
        else
            qCWarning(lcWeb).noquote() << QStringLiteral("the history cannot be written: %1").arg(reason);
    }

    HistoryStore &m_store;
    const Timestamp m_retentionDays;
    QTimer m_retention;
    QHash<QString, QVector<KnownDrive>> m_known; ///< by service
    QString m_reason;                            ///< of the failure that lasts
};

HistoryRecorder::HistoryRecorder(HistoryStore &store, int retentionDays, QObject *parent)
    : QObject(parent)
    , m_worker(std::make_unique<Worker>(store, retentionDays))
{
    m_worker->moveToThread(&m_thread);
    m_thread.setObjectName(QStringLiteral("history"));
    connect(&m_thread, &QThread::started, m_worker.get(), [worker = m_worker.get()] { worker->start(); });
    m_thread.start();
}

HistoryRecorder::~HistoryRecorder()
{
    // After the queued comparisons, so they are written first.
    QMetaObject::invokeMethod(
        m_worker.get(), [this] { m_worker->stop(); }, Qt::QueuedConnection);
    if (!m_thread.wait(kStopLimitMs)) {
        qCCritical(lcWeb) << "the history's disk does not answer; the program ends without it";
        std::_Exit(EXIT_FAILURE);
    }
}

void HistoryRecorder::record(std::shared_ptr<const ServiceSnapshot> before,
                             std::shared_ptr<const ServiceSnapshot> after)
{
    if (m_queued >= kMostQueued)
        return;
    ++m_queued;
    QMetaObject::invokeMethod(
        m_worker.get(),
        [this, before = std::move(before), after = std::move(after)] {
            m_worker->record(*before, *after);
            --m_queued;
        },
        Qt::QueuedConnection);
}

} // namespace web
