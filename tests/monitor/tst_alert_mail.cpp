// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_mail.h"

#include "disk/device_record.h"
#include "rows.h"

#include <QtTest>

class TestAlertMail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void alertMessage_data()
    {
        QTest::addColumn<int>("alertLevel");
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("message");
        row("warning", 2, "Disk trouble",
            "From: disks@example.org\r\nTo: admin@example.org\r\nSubject: Disk trouble\r\n"
            "WARNING from (tower) 2026-11-15 00:36:07\r\n"
            "ID: 0 WDC\r\n   Parameter ID 5=10\r\n");
        row("alarm without subject", 3, "",
            "From: disks@example.org\r\nTo: admin@example.org\r\nSubject: \r\n"
            "ALARM from (tower) 2026-11-15 00:36:07\r\n"
            "ID: 0 WDC\r\n   Parameter ID 5=10\r\n");
    }

    void alertMessage()
    {
        QFETCH(int, alertLevel);
        QFETCH(QString, subject);
        Settings settings;
        settings.smtpFrom = QStringLiteral("disks@example.org");
        settings.smtpTo = QStringLiteral("admin@example.org");
        settings.smtpSubj = subject;
        const SmtpMail mail =
            alertMail(alertLevel, QStringLiteral("ID: 0 WDC\n   Parameter ID 5=10"), settings,
                      QStringLiteral("tower"), QDateTime(QDate(2026, 11, 15), QTime(0, 36, 7)));
        QTEST(mail.message, "message");
    }

    void settingsAreTaken()
    {
        Settings settings;
        settings.smtpNeedAuth = true;
        settings.smtpServer = QStringLiteral("mail.example.org");
        settings.smtpPort = 2525;
        settings.smtpUser = QStringLiteral("user");
        settings.smtpPass = QStringLiteral("secret");
        const SmtpMail mail = alertMail(2, QString(), settings, QString(), QDateTime());
        QCOMPARE(mail.needAuth, true);
        QCOMPARE(mail.server, QStringLiteral("mail.example.org"));
        QCOMPARE(mail.port, quint16(2525));
        QCOMPARE(mail.user, QStringLiteral("user"));
        QCOMPARE(mail.password, QStringLiteral("secret"));
    }

    void testFields()
    {
        const auto mail =
            testMail(QStringLiteral("2525~;1~;a@b~;c@d~;mail~;Hello~;user~;secret~;first\nsecond~;not sent"));
        QVERIFY(mail);
        QCOMPARE(mail->port, quint16(2525));
        QCOMPARE(mail->needAuth, true);
        QCOMPARE(mail->from, QStringLiteral("a@b"));
        QCOMPARE(mail->to, QStringLiteral("c@d"));
        QCOMPARE(mail->server, QStringLiteral("mail"));
        QCOMPARE(mail->user, QStringLiteral("user"));
        QCOMPARE(mail->password, QStringLiteral("secret"));
        QCOMPARE(mail->message,
                 QStringLiteral("From: a@b\r\nTo: c@d\r\nSubject: Hello\r\nfirst\r\nsecond\r\n"));
    }

    void missingTestFields()
    {
        QVERIFY(!testMail(QStringLiteral("25~;0~;a~;b~;c~;d~;e~;f")));
        QVERIFY(testMail(QStringLiteral("25~;0~;a~;b~;c~;d~;e~;f~;")));
    }

    void textOfTestMail_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sent"); // what follows the headers
        row("dot", "ab\n.\ncd", "ab\r\n..\r\ncd\r\n");
        row("any one character", "ab\nx\ncd", "ab\r\n..\r\ncd\r\n");
        row("first line", ".\ncd", "..\r\ncd\r\n");
        row("last line", "ab\n.", "ab\r\n..\r\n");
        row("two in a row", "ab\n.\n.\ncd", "ab\r\n..\r\n.\r\ncd\r\n");
        row("three in a row", "ab\n.\nx\n.\ncd", "ab\r\n..\r\nx\r\n..\r\ncd\r\n");
        row("two characters", "ab\n..\ncd", "ab\r\n..\r\ncd\r\n");
        row("dot that begins a line", "ab\n.b\nef", "ab\r\n.b\r\nef\r\n");
        row("empty lines", "ab\n\n\ncd", "ab\r\n\r\n\r\ncd\r\n");
        row("CR LF already", "ab\r\ncd", "ab\r\r\ncd\r\n");
        row("CR alone on its line", "ab\n\r\ncd", "ab\r\n..\r\ncd\r\n");
        row("empty", "", "\r\n");
    }

    void textOfTestMail()
    {
        QFETCH(QString, text);
        const auto mail = testMail(QStringLiteral("25~;0~;a~;b~;c~;d~;e~;f~;") + text);
        QVERIFY(mail);
        QTEST(mail->message.mid(QStringLiteral("From: a\r\nTo: b\r\nSubject: d\r\n").size()), "sent");
    }
};

QTEST_APPLESS_MAIN(TestAlertMail)
#include "tst_alert_mail.moc"
