// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"
#include "rows.h"

#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTest>

#include <pwd.h>
#include <unistd.h>

namespace {

/// %1 user, %2 folder, %3 condition of the recipient check
const char kMailServer[] = R"(
primary_hostname = mail.test
exim_user = %1
spool_directory = %2/spool
log_file_path = %2/%slog
pid_file_path = %2/pid
keep_environment =
daemon_startup_retries = 0
deliver_drop_privilege = true
received_header_text =
tls_advertise_hosts =
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

/// Debian's exim4 with a configuration of its own on a free port of 127.0.0.1. It puts every mail, from
/// whomever to whomever, into one file.
class MailServer
{
public:
    /// With `needAuth` only user "user" with password "secret" may send.
    explicit MailServer(bool needAuth)
    {
        // It never delivers as root, and without root it can only be who starts it. Root's takes a
        // configuration of root's alone, but writes into the folder as its own user.
        const passwd *const user = geteuid() == 0 ? getpwnam("Debian-exim") : getpwuid(geteuid());
        QFile file(m_folder.filePath("configuration"));
        if (user == nullptr || !file.open(QIODevice::WriteOnly) ||
            chown(QFile::encodeName(m_folder.path()).constData(), user->pw_uid, user->pw_gid) != 0)
            qFatal("there is no user for exim4, or no folder");
        QByteArray text = kMailServer;
        text.replace("%1", user->pw_name).replace("%2", QFile::encodeName(m_folder.path()));
        file.write(text.replace("%3", needAuth ? "authenticated = *" : ""));
    }

    ~MailServer()
    {
        m_process.terminate();
        if (!m_process.waitForFinished())
            m_process.kill();
    }

    /// Starts it and waits until it answers, at a free port; another one may have taken that meanwhile.
    [[nodiscard]] bool start()
    {
        constexpr int kPortsToTry = 5;
        for (int i = 0; i < kPortsToTry; ++i) {
            QTcpServer free;
            free.listen(QHostAddress::LocalHost);
            m_port = free.serverPort();
            free.close();
            m_process.start(QStandardPaths::findExecutable("exim4", {"/usr/sbin"}),
                            {"-C", m_folder.filePath("configuration"), "-bdf", "-oX",
                             QString("127.0.0.1.%1").arg(m_port)});
            while (!m_process.waitForFinished(50) && m_process.state() == QProcess::Running) {
                if (RawConsole(m_port).socket().waitForReadyRead(1000))
                    return true;
            }
        }
        return false;
    }

    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QByteArray output() { return m_process.readAllStandardError(); }

    /// All mail delivered so far, without any header that is exim's own.
    [[nodiscard]] QByteArray mailbox() const
    {
        QFile file(m_folder.filePath("mailbox"));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

private:
    QTemporaryDir m_folder;
    QProcess m_process;
    quint16 m_port = 0;
};

QJsonObject warmDrive(const QByteArray &celsius)
{
    return json(R"({"drives": [{"number": 3, "model": "WARM DRIVE", "smart": {"attributes": [
        {"id": 194, "current": 100, "worst": 90, "raw": )" +
                celsius + "}]}}]}");
}

} // namespace

/// What the service tells when nobody asks: the event log, and mails through a real server.
class TestAlarms : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_service.writeMachine(warmDrive("30"));
        QVERIFY2(m_service.serve(), m_service.output());
    }

    void cleanupTestCase() { QCOMPARE(m_service.stop(), 0); }

    void testMail_data()
    {
        QTest::addColumn<bool>("needAuth"); // of the server
        QTest::addColumn<QString>("mail");
        QTest::addColumn<QString>("lastReply");
        const QString mail = "%1~;0~;disks@example.org~;admin@example.org~;127.0.0.1~;Hello~;user~;secret~;"
                             "first line\n.\nsecond\nx\n\n.hidden\nlast line";
        const QString withLogin = QString(mail).replace("%1~;0", "%1~;1");
        row("without login", false, mail, "221 ");
        row("with login", true, withLogin, "221 ");
        row("wrong password", true, QString(withLogin).replace("secret", "wrong"), "535 ");
        row("no login", true, mail, "550 ");
    }

    /// The server adds the empty line that parts headers and text, and takes away a dot from the front of
    /// each line that begins with one; ours makes a line of one character two dots.
    void testMail()
    {
        QFETCH(bool, needAuth);
        QFETCH(QString, mail);
        QFETCH(QString, lastReply);
        MailServer server(needAuth);
        QVERIFY2(server.start(), server.output());
        const QString dialogue = m_service.ask("SMTPTEST]![" + mail.arg(server.port()));
        QVERIFY2(dialogue.trimmed().section('\n', -1).startsWith(lastReply), qPrintable(dialogue));
        if (lastReply == "221 ")
            QTRY_COMPARE_WITH_TIMEOUT(server.mailbox(),
                                      QByteArray("From: disks@example.org\n"
                                                 "To: admin@example.org\n"
                                                 "Subject: Hello\n"
                                                 "\n"
                                                 "first line\n.\nsecond\n.\n\nhidden\nlast line\n"),
                                      kPatienceMs);
    }

    void heatedDrive()
    {
        MailServer server(false);
        QVERIFY2(server.start(), server.output());
        const QString settings = "SET]![0~;180000~;300000~;1~;1~;1~;disks@example.org~;admin@example.org~;"
                                 "Disk trouble~;127.0.0.1~;0~;~;~;%1~;55~;65~;~;";
        QCOMPARE(m_service.ask(settings.arg(server.port())), QString("SET_OK"));

        const QString text = "ID: 3 WARM DRIVE\n   Temperature=70 Celsius (158 Fahrengeit)";
        const QJsonObject entry{
            {"category", 0}, {"id", 3}, {"source", "Halvex"}, {"text", text}, {"type", 1}};
        const QByteArray event = QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
        for (const bool isHot : {true, false}) {
            QVERIFY(m_service.events().contains(event) != isHot);
            m_service.writeMachine(warmDrive(isHot ? "70" : "31"));
            QCOMPARE(m_service.ask("REFRESH"), QString("REFRESH_OK"));
            QCOMPARE(m_service.firstLine().split("]![").value(6), QString(isHot ? "3" : "1"));
            QVERIFY(m_service.events().contains(event));
        }
        QTRY_VERIFY_WITH_TIMEOUT(!server.mailbox().isEmpty(), kPatienceMs);
        const QRegularExpression mail(
            "\\AFrom: disks@example.org\nTo: admin@example.org\nSubject: Disk trouble\n"
            "\nALARM from \\(.*\\) \\d{4}-.*\n" +
            QRegularExpression::escape(text) + "\n\\z");
        QVERIFY2(mail.match(QString::fromLatin1(server.mailbox())).hasMatch(), server.mailbox());

        // Drive 0 of the list at 30, 70 and 31 degrees: "!" and the degree's character end each record.
        const QString history = m_service.ask("GSTATD]![260101000000]![991231235959");
        for (const char *record : {"!?", "!g", "!@"})
            QVERIFY2(history.contains(QLatin1String(record)), qPrintable(history));
    }

private:
    ServiceFixture m_service; ///< one drive, cool at first
};

QTEST_GUILESS_MAIN(TestAlarms)
#include "tst_alarms.moc"
