// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QHostInfo>
#include <QObject>
#include <QString>

#include <memory>

/// Resolves host names. Unlike QHostInfo::lookupHost(), whose threads the application waits for when it ends,
/// a lookup that does not return is abandoned: its thread ends by itself and its result is dropped. Event
/// loop's thread only.
class HostLookup : public QObject
{
    Q_OBJECT

public:
    explicit HostLookup(QObject *parent = nullptr);
    ~HostLookup() override;

    /// Starts a lookup, which ends with finished() in a later turn of the event loop. Cancels the one before.
    void start(const QString &name);

    /// Drops the result of the lookup in progress.
    void cancel() { ++m_current; }

    /// Returns whether the thread of any lookup, cancelled ones included, is still in the resolver. The
    /// process must then end without destroying static objects.
    [[nodiscard]] static bool isAnyRunning();

Q_SIGNALS:
    void finished(const QHostInfo &info);

private:
    struct Receiver;

    void deliver(int lookup, const QHostInfo &info);

    int m_current = 0; ///< number of the lookup whose result counts
    std::shared_ptr<Receiver> m_receiver;
};
