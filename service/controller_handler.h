// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QMutex>
#include <QObject>
#include <QWaitCondition>

/// Brings control requests to the thread it lives on, the main one, as events of type 1000 plus the control
/// code, and has the service host carry them out there.
class QtServiceControllerHandler : public QObject
{
    Q_OBJECT
public:
    /// The host's own code beside those of the manager: start.
    static constexpr quint32 kStartCode = 256;

    /// Called on other threads. Returns when the request has been carried out; false when the service has
    /// left its event loop before that.
    bool deliver(quint32 code);

    /// Ends every wait, now and later: the event loop is left.
    void close();

protected:
    void customEvent(QEvent *event) override;

private:
    QMutex m_mutex; // guards all below
    QWaitCondition m_progress;
    quint64 m_posted = 0; // events are handled in the order they are posted in, so counting tells them apart
    quint64 m_handled = 0;
    bool m_closed = false;
};
