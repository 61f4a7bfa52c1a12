// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"

#include <QMutex>
#include <QString>
#include <QThread>

#include <functional>
#include <memory>
#include <optional>
#include <utility>

/// Work that may block for ever, on a thread of its own. Workers starts and owns it. It receives values when
/// it is constructed and returns values under a lock of its own; it accesses no record.
class Worker : public QThread
{
    Q_OBJECT

public:
    /// `subject` is the drive's path, or the name of another resource in which the work may hang.
    explicit Worker(QString subject)
        : m_subject(std::move(subject))
    {}

    [[nodiscard]] const QString &subject() const { return m_subject; }

    /// Cancels a pending request, as far as the system can, so that the work ends soon. Any thread.
    virtual void cancel() {}

    /// Asks the work to end at a safe point.
    virtual void requestStop() { cancel(); }

    /// Returns whether the work has advanced since the last call; its limit then starts again.
    [[nodiscard]] virtual bool hasAdvanced() { return false; }

    /// Returns whether it may run beside another worker of its subject, as a scan beside S.M.A.R.T. reads.
    [[nodiscard]] virtual bool runsBeside() const { return false; }

Q_SIGNALS:
    void workDone(); ///< from the worker's thread: the result is complete, the thread may still clean up

private:
    const QString m_subject;
};

/// Returns the value of a function that may block.
template <typename T>
class FunctionWorker : public Worker
{
public:
    FunctionWorker(QString subject, std::function<T()> function)
        : Worker(std::move(subject))
        , m_function(std::move(function))
    {}

    /// Returns nullopt while the function runs. Any thread.
    [[nodiscard]] std::optional<T> value() const
    {
        const QMutexLocker lock(&m_mutex);
        return m_value;
    }

protected:
    void run() override
    {
        T value = m_function();
        {
            const QMutexLocker lock(&m_mutex);
            m_value = std::move(value);
        }
        Q_EMIT workDone();
    }

private:
    const std::function<T()> m_function;
    mutable QMutex m_mutex;
    std::optional<T> m_value;
};

/// Work on one drive, which it opens and closes.
class DriveWorker : public Worker
{
    Q_OBJECT

public:
    /// `drives` outlives the thread.
    DriveWorker(DriveSystem &drives, QString path)
        : Worker(std::move(path))
        , m_drives(drives)
    {}

    void cancel() override;

public Q_SLOTS:
    void closeHeader(); ///< closes the drive; for the worker's thread

protected:
    /// Runs on the worker's thread; `drive` is null when opening it failed with `openError`.
    virtual void work(Drive *drive, quint32 openError) = 0;

    void run() override;

    [[nodiscard]] DriveSystem &drives() { return m_drives; }

private:
    DriveSystem &m_drives;

    QMutex m_mutex; ///< guards what follows; never held during a request
    std::unique_ptr<Drive> m_drive;
    bool m_isCancelled = false;
};
