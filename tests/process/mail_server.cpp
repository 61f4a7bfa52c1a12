// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/mail_server.h"

#include "files.h"
#include "process/service_fixture.h"

#include <QFile>
#include <QStandardPaths>
#include <QTcpServer>

#include <pwd.h>
#include <unistd.h>

namespace {

/// %1 user, %2 folder, %3 condition of the recipient check, %4 TLS
const char kConfiguration[] = R"(
primary_hostname = mail.test
exim_user = %1
spool_directory = %2/spool
log_file_path = %2/%slog
pid_file_path = %2/pid
keep_environment =
daemon_startup_retries = 0
deliver_drop_privilege = true
received_header_text =
%4
acl_smtp_rcpt = check_recipient

begin acl
check_recipient:
  accept %3

begin routers
everyone:
  driver = accept
  transport = mailbox

begin transports
mailbox:
  driver = appendfile
  file = %2/mailbox
  user = %1
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

} // namespace

MailServer::MailServer(const Options &options)
    : m_tlsFromStart(options.tlsFromStart)
{
    // Exim never delivers as root, and without root only as the user that starts it. Root's Exim needs a
    // configuration that root owns, but writes into the folder as its own user.
    const passwd *const user = geteuid() == 0 ? getpwnam("Debian-exim") : getpwuid(geteuid());
    if (user == nullptr ||
        chown(QFile::encodeName(m_folder.path()).constData(), user->pw_uid, user->pw_gid) != 0)
        qFatal("there is no user for exim4, or no folder");
    QByteArray tls = "tls_advertise_hosts =";
    if (!options.certificate.isEmpty()) {
        tls = "tls_advertise_hosts = *\ntls_certificate = %2/certificate\nauth_advertise_hosts = ${if "
              "eq{$tls_in_cipher}{}{}{*}}";
        const QString certificate = m_folder.filePath("certificate");
        writeFile(certificate, options.certificate);
        if (chown(QFile::encodeName(certificate).constData(), user->pw_uid, gid_t(-1)) != 0)
            qFatal("the certificate cannot be given to exim4");
    }
    QByteArray text = kConfiguration;
    text.replace("%4", tls).replace("%1", user->pw_name).replace("%2", QFile::encodeName(m_folder.path()));
    text.replace("%3", options.needAuth ? "authenticated = *" : "");
    writeFile(m_folder.filePath("configuration"), text);
}

MailServer::~MailServer()
{
    stop();
}

bool MailServer::start()
{
    constexpr int kPortsToTry = 5;
    for (int i = 0; i < kPortsToTry; ++i) {
        QTcpServer free;
        free.listen(QHostAddress::LocalHost);
        m_port = free.serverPort();
        free.close();
        if (startOn(m_port))
            return true;
    }
    return false;
}

bool MailServer::restart()
{
    return startOn(m_port);
}

void MailServer::stop()
{
    m_process.terminate();
    if (!m_process.waitForFinished())
        m_process.kill();
}

bool MailServer::startOn(quint16 port)
{
    QStringList arguments{"-C", m_folder.filePath("configuration"), "-bdf", "-oX",
                          QString("127.0.0.1.%1").arg(port)};
    if (m_tlsFromStart)
        arguments << "-tls-on-connect";
    m_process.start(QStandardPaths::findExecutable("exim4", {"/usr/sbin"}), arguments);
    // A process that is still starting would be mistaken for one that has ended.
    if (!m_process.waitForStarted())
        return false;
    while (!m_process.waitForFinished(50) && m_process.state() == QProcess::Running) {
        RawConsole probe(port);
        if (m_tlsFromStart ? probe.isConnected() : probe.socket().waitForReadyRead(1000))
            return true;
    }
    return false;
}

QByteArray MailServer::file(const QString &name) const
{
    return contentOf(m_folder.filePath(name));
}

TestAuthority::TestAuthority()
{
    if (!openssl(
            "req -x509 -newkey rsa:2048 -nodes -keyout ca.key -out ca.pem -days 30 -subj /CN=Authority") ||
        !openssl("req -newkey rsa:2048 -nodes -keyout key -out request -subj /CN=mail.test"))
        qFatal("openssl cannot make an authority");
}

QByteArray TestAuthority::certificateFor(const QString &names, int days) const
{
    writeFile(m_folder.filePath("names"), "subjectAltName=" + names.toLatin1());
    if (!openssl("x509 -req -in request -CA ca.pem -CAkey ca.key -CAcreateserial -out certificate -extfile "
                 "names -days " +
                 QString::number(days)))
        return {};
    QByteArray pem;
    for (const char *part : {"certificate", "key"})
        pem += contentOf(m_folder.filePath(part));
    return pem;
}

bool TestAuthority::openssl(const QString &arguments) const
{
    QProcess process;
    process.setWorkingDirectory(m_folder.path());
    process.start("openssl", arguments.split(' '));
    return process.waitForFinished(kPatienceMs) && process.exitCode() == 0;
}
