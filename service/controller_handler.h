// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QMutex>
#include <QObject>
#include <QWaitCondition>

/// Passes control requests of other threads to the service host on the main thread, where the handler must
/// be created. Each request is an event of type 1000 plus the control code.
class QtServiceControllerHandler : public QObject
{
    Q_OBJECT
public:
    /// The host's own code for the start, beside the service manager's control codes.
    static constexpr quint32 kStartCode = 256;

    /// Waits until the main thread has carried out the request. Returns false if the service has left its
    /// event loop before. For any thread but the main one.
    bool deliver(quint32 code);

    /// Ends every present and future wait. Called when the event loop has ended.
    void close();

protected:
    void customEvent(QEvent *event) override;

private:
    QMutex m_mutex; // guards all below
    QWaitCondition m_progress;
    quint64 m_posted = 0; // events are handled in the order of posting, so a count identifies each
    quint64 m_handled = 0;
    bool m_closed = false;
};
