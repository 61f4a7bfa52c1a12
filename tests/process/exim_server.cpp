// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/exim_server.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>

#include <grp.h>
#include <pwd.h>
#include <unistd.h>

namespace {

constexpr int kStartTimeoutMs = 30000;
constexpr int kPortsToTry = 5;

/// %1 user, %2 group, %3 folder, %4 condition of the recipient check
const char kConfiguration[] = R"(
primary_hostname = mail.test
exim_user = %1
exim_group = %2
spool_directory = %3/spool
log_file_path = %3/%slog
pid_file_path = %3/pid
keep_environment =
daemon_startup_retries = 0
deliver_drop_privilege = true
received_header_text =
tls_advertise_hosts =
acl_smtp_rcpt = check_recipient

begin acl
check_recipient:
  %4

begin routers
everyone:
  driver = accept
  transport = mailbox

begin transports
mailbox:
  driver = appendfile
  file = %3/mailbox
  user = %1
  group = %2
  message_prefix =
  message_suffix =

begin authenticators
login:
  driver = plaintext
  public_name = LOGIN
  server_prompts = Username:: : Password::
  server_condition = ${if and{{eq{$auth1}{user}}{eq{$auth2}{secret}}}}
  server_set_id = $auth1
)";

/// Whom exim runs as: it never delivers as root, and without root it can only be who starts it.
const passwd *eximUser()
{
    return geteuid() == 0 ? getpwnam("Debian-exim") : getpwuid(geteuid());
}

quint16 freePort()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHost) ? server.serverPort() : quint16(0);
}

} // namespace

EximServer::EximServer(bool needAuth)
    : m_needAuth(needAuth)
{
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

EximServer::~EximServer()
{
    m_process.terminate();
    if (!m_process.waitForFinished())
        m_process.kill();
}

bool EximServer::start()
{
    if (!writeConfiguration()) {
        m_errorText = QStringLiteral("there is no user for exim4, or no folder");
        return false;
    }
    for (int i = 0; i < kPortsToTry; ++i) {
        if (startOn(freePort()))
            return true;
    }
    return false;
}

bool EximServer::startOn(quint16 port)
{
    const QString exim =
        QStandardPaths::findExecutable(QStringLiteral("exim4"), {QStringLiteral("/usr/sbin")});
    if (exim.isEmpty()) {
        m_errorText = QStringLiteral("exim4 is not installed (Debian: exim4-daemon-light)");
        return false;
    }
    m_port = port;
    m_process.start(exim, {QStringLiteral("-C"), m_folder.filePath(QStringLiteral("configuration")),
                           QStringLiteral("-bdf"), QStringLiteral("-oX"),
                           QStringLiteral("127.0.0.1.%1").arg(port)});
    const QDeadlineTimer deadline(kStartTimeoutMs);
    while (!deadline.hasExpired() && !m_process.waitForFinished(50)) {
        QTcpSocket probe;
        probe.connectToHost(QHostAddress::LocalHost, port);
        if (probe.waitForReadyRead(1000))
            return true;
    }
    m_errorText = QString::fromLocal8Bit(m_process.readAll());
    m_process.kill();
    m_process.waitForFinished();
    return false;
}

bool EximServer::writeConfiguration()
{
    const passwd *const user = eximUser();
    const group *const userGroup = user != nullptr ? getgrgid(user->pw_gid) : nullptr;
    if (userGroup == nullptr || !m_folder.isValid())
        return false;
    const QString recipients =
        m_needAuth ? QStringLiteral("accept authenticated = *") : QStringLiteral("accept");
    QString text = QString::fromLatin1(kConfiguration);
    text.replace(QStringLiteral("%1"), QString::fromLocal8Bit(user->pw_name));
    text.replace(QStringLiteral("%2"), QString::fromLocal8Bit(userGroup->gr_name));
    text.replace(QStringLiteral("%3"), m_folder.path());
    text.replace(QStringLiteral("%4"), recipients);

    // Root's exim takes a configuration of root's alone, but writes into the folder as its own user.
    QFile file(m_folder.filePath(QStringLiteral("configuration")));
    return file.open(QIODevice::WriteOnly) && file.write(text.toLocal8Bit()) > 0 &&
           chown(QFile::encodeName(m_folder.path()).constData(), user->pw_uid, user->pw_gid) == 0;
}

QByteArray EximServer::mailbox() const
{
    QFile file(m_folder.filePath(QStringLiteral("mailbox")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}
