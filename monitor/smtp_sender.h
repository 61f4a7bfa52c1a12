// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/service_options.h"
#include "monitor/host_lookup.h"
#include "monitor/mail_run.h"
#include "monitor/smtp_dialogue.h"

#include <QAbstractSocket>
#include <QDateTime>
#include <QHostAddress>
#include <QList>
#include <QObject>
#include <QSslError>
#include <QTimer>

#include <chrono>
#include <optional>

class QSslSocket;
class QTcpSocket;

/// Time limits of a mail run. They appear in error texts in whole seconds.
struct SmtpTimeouts
{
    std::chrono::milliseconds connecting = std::chrono::seconds(30); ///< name lookup included
    std::chrono::milliseconds reply{0}; ///< how long a connected server may be silent; 0: no limit
};

/// How connections to mail servers are protected.
struct SmtpTls
{
    SmtpSecurity security = SmtpSecurity::None;
    QList<QSslCertificate> authorities; ///< empty: the system's
};

/// Sends one mail at a time, over plain SMTP or over TLS 1.2 or newer. With TLS nothing of the mail is sent
/// before the certificate and its host name have been verified, and there is no fallback to plain text. Each
/// run ends with one of the two signals, in a later turn of the event loop than its start; the sender is free
/// again when the signal is emitted.
///
/// Without a reply limit a server that falls silent keeps the sender busy until the connection ends; the
/// system's keep-alive probes end it if the server has vanished.
class smtp_sender : public QObject
{
    Q_OBJECT

public:
    explicit smtp_sender(QObject *parent = nullptr);
    explicit smtp_sender(const SmtpTls &tls, QObject *parent = nullptr);
    /// Drops a run in progress, without a signal and without waiting.
    ~smtp_sender() override;

    void setTimeouts(const SmtpTimeouts &timeouts) { m_timeouts = timeouts; }

    [[nodiscard]] bool isBusy() const { return m_busy; }

    /// Returns what the run in progress is waiting for and since when, as one line for logs.
    [[nodiscard]] QString activity() const;

    /// Does nothing while busy.
    void start(const SmtpMail &mail);

Q_SIGNALS:
    void smtpSenderError(const MailRun &run);
    void smtpSenderOk(const MailRun &run);

private Q_SLOTS:
    void connected();
    void disconnected();
    void displayError(QAbstractSocket::SocketError socketError);
    void readyRead();
    void timeOut();

private:
    void connectToAddresses(const QHostInfo &info);
    void connectToNextAddress();
    void startReplyTimer();
    void startTls();
    void encrypted();
    void rememberTlsErrors(const QList<QSslError> &errors);
    void fail(MailRun::Outcome outcome, const QString &error);
    MailRun endRun();

    const SmtpSecurity m_security;
    const QList<QSslCertificate> m_authorities;
    SmtpTimeouts m_timeouts;
    bool m_busy = false;
    bool m_isConnected = false; ///< and encrypted, if TLS is used from the start
    QString m_tlsErrors;        ///< of the run in progress
    QDateTime m_startTime;
    QString m_server; ///< host name as it was given
    quint16 m_port = 0;
    QList<QHostAddress> m_addresses; ///< of the server, not yet tried
    HostLookup m_lookup;
    QSslSocket *m_tlsSocket; ///< m_socket, if TLS is used
    QTcpSocket *m_socket;
    QTimer *m_timer;                        ///< limits connecting, then each wait for the server
    QTimer *m_nextAddress;                  ///< leaves the socket's signal before it connects again
    std::optional<SmtpDialogue> m_dialogue; ///< of the run in progress
};
