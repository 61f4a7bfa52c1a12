// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/smtp_sender.h"

#include "monitor/certificate_chain.h"
#include "monitor/monitor_log.h"
#include "platform/keep_alive.h"

#include <QSslConfiguration>
#include <QSslSocket>
#include <QTcpSocket>

#include <utility>

namespace {

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

/// Without TLS there is no TLS socket: creating one loads the TLS library.
QSslSocket *makeTlsSocket(const SmtpTls &tls, QObject *parent)
{
    if (tls.security == SmtpSecurity::None)
        return nullptr;
    auto *const socket = new QSslSocket(parent);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setProtocol(QSsl::TlsV1_2OrLater);
    configuration.setPeerVerifyMode(QSslSocket::VerifyPeer);
    if (!tls.authorities.isEmpty())
        configuration.setCaCertificates(tls.authorities);
    socket->setSslConfiguration(configuration);
    return socket;
}

} // namespace

smtp_sender::smtp_sender(QObject *parent)
    : smtp_sender(SmtpTls(), parent)
{}

smtp_sender::smtp_sender(const SmtpTls &tls, QObject *parent)
    : QObject(parent)
    , m_security(tls.security)
    , m_authorities(tls.authorities)
    , m_tlsSocket(makeTlsSocket(tls, this))
    , m_socket(m_tlsSocket ? m_tlsSocket : new QTcpSocket(this))
    , m_timer(new QTimer(this))
    , m_nextAddress(new QTimer(this))
{
    m_socket->setReadBufferSize(SmtpDialogue::kMaxReplySize);
    connect(m_socket, &QAbstractSocket::readyRead, this, &smtp_sender::readyRead);
    connect(m_socket, &QAbstractSocket::connected, this, &smtp_sender::connected);
    connect(m_socket, &QAbstractSocket::disconnected, this, &smtp_sender::disconnected);
    connect(m_socket, &QAbstractSocket::errorOccurred, this, &smtp_sender::displayError);
    connect(m_socket, &QIODevice::bytesWritten, this, &smtp_sender::startReplyTimer);
    if (m_tlsSocket) {
        connect(m_tlsSocket, &QSslSocket::encrypted, this, &smtp_sender::encrypted);
        connect(m_tlsSocket, qOverload<const QList<QSslError> &>(&QSslSocket::sslErrors), this,
                &smtp_sender::rememberTlsErrors);
    }
    connect(m_timer, &QTimer::timeout, this, &smtp_sender::timeOut);
    connect(m_nextAddress, &QTimer::timeout, this, &smtp_sender::connectToNextAddress);
    connect(&m_lookup, &HostLookup::finished, this, &smtp_sender::connectToAddresses);
    m_timer->setSingleShot(true);
    m_nextAddress->setSingleShot(true);
    m_nextAddress->setInterval(0);
}

smtp_sender::~smtp_sender()
{
    m_socket->disconnect(this);
}

QString smtp_sender::activity() const
{
    const QString state = m_isConnected ? QStringLiteral("waiting for a reply of %1 port %2 since %3")
                                        : QStringLiteral("connecting to %1 port %2 since %3");
    return state.arg(printableText(m_server), QString::number(m_port),
                     m_startTime.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")));
}

void smtp_sender::start(const SmtpMail &mail)
{
    if (m_busy)
        return;
    const bool asksForTls = m_security == SmtpSecurity::StartTls;
    m_dialogue.emplace(mail, QHostInfo::localHostName(),
                       asksForTls ? SmtpDialogue::StartTls::Yes : SmtpDialogue::StartTls::No);
    m_tlsErrors.clear();
    m_socket->abort();
    m_busy = true;
    m_isConnected = false;
    m_startTime = QDateTime::currentDateTime();
    m_server = mail.server;
    m_port = mail.port;
    m_timer->start(m_timeouts.connecting);
    qCDebug(lcMonitor) << "SMTP run started:" << m_server << "port" << m_port;
    const QHostAddress literal(mail.server);
    if (literal.isNull()) {
        m_lookup.start(mail.server);
    } else {
        m_addresses = {literal};
        m_nextAddress->start();
    }
}

void smtp_sender::connectToAddresses(const QHostInfo &info)
{
    m_addresses = info.addresses();
    if (m_addresses.isEmpty())
        fail(MailRun::Outcome::ConnectionFailed, errorName(QAbstractSocket::HostNotFoundError, {}));
    else
        connectToNextAddress();
}

void smtp_sender::connectToNextAddress()
{
    m_socket->connectToHost(m_addresses.takeFirst(), m_port);
}

void smtp_sender::connected()
{
    m_addresses.clear();
    enableKeepAlive(m_socket->socketDescriptor());
    if (m_security == SmtpSecurity::Tls) {
        startTls(); // the time limit of connecting includes it
        return;
    }
    m_isConnected = true;
    m_timer->stop();
    startReplyTimer();
}

void smtp_sender::startTls()
{
    m_tlsSocket->setPeerVerifyName(m_server);
    m_tlsSocket->startClientEncryption();
}

void smtp_sender::encrypted()
{
    if (!m_authorities.isEmpty() && !isIssuedByOneOf(m_authorities, m_tlsSocket->peerCertificateChain())) {
        fail(MailRun::Outcome::ConnectionFailed,
             QStringLiteral("TLS: the certificate's issuer is not an accepted authority"));
        return;
    }
    m_isConnected = true;
    m_timer->stop();
    startReplyTimer();
    m_socket->write(m_dialogue->encrypted());
}

/// The socket ends the connection afterwards, because nobody ignores the errors.
void smtp_sender::rememberTlsErrors(const QList<QSslError> &errors)
{
    QStringList texts;
    for (const QSslError &error : errors)
        texts << error.errorString();
    m_tlsErrors = QStringLiteral("TLS: ") + texts.join(QStringLiteral(", "));
}

void smtp_sender::disconnected()
{
    qCDebug(lcMonitor) << "SMTP Sender Disconnected";
    if (m_busy)
        fail(MailRun::Outcome::ConnectionFailed, errorName(QAbstractSocket::RemoteHostClosedError, {}));
}

void smtp_sender::displayError(QAbstractSocket::SocketError socketError)
{
    if (!m_busy)
        return;
    if (!m_addresses.isEmpty())
        m_nextAddress->start();
    else if (!m_tlsErrors.isEmpty())
        fail(MailRun::Outcome::ConnectionFailed, m_tlsErrors);
    else
        fail(MailRun::Outcome::ConnectionFailed, errorName(socketError, m_socket->errorString()));
}

void smtp_sender::timeOut()
{
    using std::chrono::duration_cast;
    const auto limit = m_isConnected ? m_timeouts.reply : m_timeouts.connecting;
    const qint64 seconds = duration_cast<std::chrono::seconds>(limit).count();
    fail(MailRun::Outcome::TimedOut, QStringLiteral("Time Out %1s").arg(seconds));
}

void smtp_sender::startReplyTimer()
{
    if (m_busy && m_timeouts.reply > std::chrono::milliseconds::zero())
        m_timer->start(m_timeouts.reply);
}

void smtp_sender::readyRead()
{
    if (!m_busy)
        return;
    const QByteArray answer = m_dialogue->receive(m_socket->readAll());
    switch (m_dialogue->outcome()) {
    case SmtpDialogue::Outcome::Open:
        startReplyTimer();
        m_socket->write(answer);
        break;
    case SmtpDialogue::Outcome::AwaitsTls:
        m_timer->start(m_timeouts.connecting);
        m_isConnected = false;
        startTls();
        break;
    case SmtpDialogue::Outcome::Sent:
        Q_EMIT smtpSenderOk(endRun());
        break;
    case SmtpDialogue::Outcome::Failed:
        fail(MailRun::Outcome::UnexpectedReply, {});
        break;
    }
}

void smtp_sender::fail(MailRun::Outcome outcome, const QString &error)
{
    MailRun run = endRun();
    run.outcome = outcome;
    run.error = printableText(error);
    Q_EMIT smtpSenderError(run);
}

/// Stops everything that could end the run a second time.
MailRun smtp_sender::endRun()
{
    m_timer->stop();
    m_nextAddress->stop();
    m_lookup.cancel();
    m_addresses.clear();
    m_busy = false;
    m_socket->abort();
    MailRun run;
    run.lastReply = m_dialogue->lastReply();
    run.transcript = m_dialogue->transcript();
    m_dialogue.reset();
    return run;
}
