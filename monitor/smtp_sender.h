// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/smtp_dialogue.h"

#include <QAbstractSocket>
#include <QObject>
#include <QString>

#include <chrono>
#include <optional>

class QTcpSocket;
class QTimer;

/// Sends one mail at a time over plain SMTP. Each run ends with one of the two signals, in a later turn of
/// the event loop than its start; the sender is free again when the signal comes.
///
/// Only the connecting is timed. A server that falls silent afterwards keeps the sender busy until it closes
/// the connection or the sender is destroyed.
class smtp_sender : public QObject
{
    Q_OBJECT

public:
    explicit smtp_sender(QObject *parent = nullptr);
    /// Drops a run that is under way, without a signal.
    ~smtp_sender() override;

    [[nodiscard]] bool isBusy() const { return m_busy; }

    /// Does nothing while busy.
    void start(const SmtpMail &mail);

    /// How long connecting may take; 30 seconds, which the error text says too, if not set.
    void setConnectTimeout(std::chrono::milliseconds timeout);

Q_SIGNALS:
    /// `text` begins with "SMTP error:".
    void smtpSenderError(const QString &text);
    /// `text` is the transcript of the dialogue.
    void smtpSenderOk(const QString &text);

private Q_SLOTS:
    void connected();
    void disconnected();
    void displayError(QAbstractSocket::SocketError socketError);
    void readyRead();
    void timeOut();

private:
    void endRun();
    void fail(const QString &text);

    bool m_busy = false;
    QTcpSocket *m_socket;
    QTimer *m_timer;
    std::optional<SmtpDialogue> m_dialogue; ///< of the run under way
};
