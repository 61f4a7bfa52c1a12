// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/smtp_sender.h"

#include "monitor/monitor_log.h"

#include <QHostInfo>
#include <QTcpSocket>
#include <QTimer>

#include <utility>

namespace {

constexpr std::chrono::seconds kConnectTimeout{30};

QString errorName(QAbstractSocket::SocketError error, const QString &otherwise)
{
    switch (error) {
    case QAbstractSocket::ConnectionRefusedError:
        return QStringLiteral("ConnectionRefusedError");
    case QAbstractSocket::RemoteHostClosedError:
        return QStringLiteral("RemoteHostClosedError");
    case QAbstractSocket::HostNotFoundError:
        return QStringLiteral("HostNotFoundError");
    default:
        return otherwise;
    }
}

} // namespace

smtp_sender::smtp_sender(QObject *parent)
    : QObject(parent)
    , m_socket(new QTcpSocket(this))
    , m_timer(new QTimer(this))
{
    m_socket->setReadBufferSize(SmtpDialogue::kMaxReplySize);
    connect(m_socket, &QAbstractSocket::readyRead, this, &smtp_sender::readyRead);
    connect(m_socket, &QAbstractSocket::connected, this, &smtp_sender::connected);
    connect(m_socket, &QAbstractSocket::disconnected, this, &smtp_sender::disconnected);
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &smtp_sender::displayError);
    connect(m_timer, &QTimer::timeout, this, &smtp_sender::timeOut);
    m_timer->setSingleShot(true);
    setConnectTimeout(kConnectTimeout);
}

smtp_sender::~smtp_sender()
{
    m_socket->disconnect(this);
}

void smtp_sender::setConnectTimeout(std::chrono::milliseconds timeout)
{
    m_timer->setInterval(timeout);
}

void smtp_sender::start(const SmtpMail &mail)
{
    if (m_busy)
        return;
    m_dialogue.emplace(mail, QHostInfo::localHostName());
    m_socket->abort();
    m_busy = true;
    m_timer->start();
    qCDebug(lcMonitor) << "SMTP Test start\n" << mail.message;
    // An address of this machine can fail at once, and its signal would come before start() has returned.
    const auto connectSocket = [this, server = mail.server, port = mail.port] {
        m_socket->connectToHost(server, port);
    };
    QMetaObject::invokeMethod(m_socket, connectSocket, Qt::QueuedConnection);
}

void smtp_sender::connected()
{
    m_timer->stop();
}

void smtp_sender::disconnected()
{
    m_timer->stop();
    m_busy = false;
    qCDebug(lcMonitor) << "SMTP Sender Disconnected";
}

void smtp_sender::displayError(QAbstractSocket::SocketError socketError)
{
    if (!m_busy)
        return;
    fail(QStringLiteral("SMTP error: %1. Check Your SMTP Settings.")
             .arg(errorName(socketError, m_socket->errorString())));
}

void smtp_sender::timeOut()
{
    fail(QStringLiteral("SMTP error: Time Out 30s."));
}

void smtp_sender::readyRead()
{
    if (!m_busy)
        return;
    const QByteArray answer = m_dialogue->receive(m_socket->readAll());
    switch (m_dialogue->outcome()) {
    case SmtpDialogue::Outcome::Open:
        m_socket->write(answer);
        break;
    case SmtpDialogue::Outcome::Sent: {
        const QString transcript = m_dialogue->transcript();
        endRun();
        Q_EMIT smtpSenderOk(transcript);
        break;
    }
    case SmtpDialogue::Outcome::Failed:
        fail(QStringLiteral("SMTP error: Unexpected reply from SMTP server.\n") + m_dialogue->transcript());
        break;
    }
}

/// Leaves nothing behind that could end the run a second time.
void smtp_sender::endRun()
{
    m_timer->stop();
    m_busy = false;
    m_socket->abort();
    m_dialogue.reset();
}

void smtp_sender::fail(const QString &text)
{
    endRun();
    Q_EMIT smtpSenderError(text);
}
