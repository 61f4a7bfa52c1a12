// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_mail.h"
#include "monitor/smtp_sender.h"
#include "process/exim_server.h"
#include "rows.h"

#include <QtTest>

namespace {

constexpr int kTimeoutMs = 30000;

Settings mailSettings(quint16 port, bool needAuth)
{
    Settings settings;
    settings.smtpServer = QStringLiteral("127.0.0.1");
    settings.smtpPort = port;
    settings.smtpNeedAuth = needAuth;
    settings.smtpFrom = QStringLiteral("disks@example.org");
    settings.smtpTo = QStringLiteral("admin@example.org");
    settings.smtpSubj = QStringLiteral("Disk trouble");
    settings.smtpUser = QStringLiteral("user");
    settings.smtpPass = QStringLiteral("secret");
    return settings;
}

SmtpMail diskMail(const Settings &settings)
{
    return alertMail(3, QStringLiteral("ID: 0 WDC\n   Temperature=66 Celsius (150 Fahrengeit)"), settings,
                     QStringLiteral("tower"), QDateTime(QDate(2026, 11, 15), QTime(0, 36, 7)));
}

} // namespace

/// Our mail on a real server: what arrives in the mailbox. The server adds the empty line that parts headers
/// and text, and takes away a dot from the front of each line that begins with one; ours makes a line of one
/// character two dots.
class TestMailServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void alertMailArrives_data()
    {
        QTest::addColumn<bool>("needAuth");
        row("without login", false);
        row("with login", true);
    }

    void alertMailArrives()
    {
        QFETCH(bool, needAuth);
        EximServer server(needAuth);
        QVERIFY2(server.start(), qPrintable(server.errorText()));
        smtp_sender sender;
        QSignalSpy ok(&sender, &smtp_sender::smtpSenderOk);
        sender.start(diskMail(mailSettings(server.port(), needAuth)));
        QVERIFY(ok.wait(kTimeoutMs));
        QTRY_COMPARE_WITH_TIMEOUT(server.mailbox(),
                                  QByteArray("From: disks@example.org\n"
                                             "To: admin@example.org\n"
                                             "Subject: Disk trouble\n"
                                             "\n"
                                             "ALARM from (tower) 2026-11-15 00:36:07\n"
                                             "ID: 0 WDC\n"
                                             "   Temperature=66 Celsius (150 Fahrengeit)\n"),
                                  kTimeoutMs);
    }

    void testMailArrives()
    {
        EximServer server(false);
        QVERIFY2(server.start(), qPrintable(server.errorText()));
        const auto mail =
            testMail(QStringLiteral("%1~;0~;disks@example.org~;admin@example.org~;127.0.0.1~;Hello~;"
                                    "~;~;first line\n.\nsecond\nx\n\n.hidden\nlast line")
                         .arg(server.port()));
        QVERIFY(mail);
        smtp_sender sender;
        QSignalSpy ok(&sender, &smtp_sender::smtpSenderOk);
        sender.start(*mail);
        QVERIFY(ok.wait(kTimeoutMs));
        QTRY_COMPARE_WITH_TIMEOUT(server.mailbox(),
                                  QByteArray("From: disks@example.org\n"
                                             "To: admin@example.org\n"
                                             "Subject: Hello\n"
                                             "\n"
                                             "first line\n.\nsecond\n.\n\nhidden\nlast line\n"),
                                  kTimeoutMs);
    }

    void refused_data()
    {
        QTest::addColumn<bool>("login");
        QTest::addColumn<QString>("lastReply");
        row("wrong password", true, "535 ");
        row("no login", false, "550 ");
    }

    void refused()
    {
        QFETCH(bool, login);
        QFETCH(QString, lastReply);
        EximServer server(true);
        QVERIFY2(server.start(), qPrintable(server.errorText()));
        Settings settings = mailSettings(server.port(), login);
        settings.smtpPass = QStringLiteral("wrong");
        smtp_sender sender;
        QSignalSpy errors(&sender, &smtp_sender::smtpSenderError);
        sender.start(diskMail(settings));
        QVERIFY(errors.wait(kTimeoutMs));
        const QString text = errors.first().first().toString();
        QVERIFY2(
            text.startsWith(QStringLiteral("SMTP error: Unexpected reply from SMTP server.\n220 mail.test")),
            qPrintable(text));
        const QString lastLine = text.trimmed().section(QLatin1Char('\n'), -1);
        QVERIFY2(lastLine.startsWith(lastReply), qPrintable(text));
    }
};

QTEST_GUILESS_MAIN(TestMailServer)
#include "tst_mail_server.moc"
