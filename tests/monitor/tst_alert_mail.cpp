// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_mail.h"

#include "disk/device_record.h"

#include <QtTest>

class TestAlertMail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void alertMessage_data();
    void alertMessage();
    void settingsAreTaken();
    void testFields();
    void missingTestFields();
    void textOfTestMail_data();
    void textOfTestMail();
};

void TestAlertMail::alertMessage_data()
{
    QTest::addColumn<int>("alertLevel");
    QTest::addColumn<QString>("subject");
    QTest::addColumn<QString>("message");
    QTest::newRow("warning")
        << 2 << "Disk trouble"
        << "From: disks@example.org\r\nTo: admin@example.org\r\nSubject: Disk trouble\r\n"
           "WARNING from (tower) 2026-11-15 00:36:07\r\n"
           "ID: 0 WDC\r\n   Parameter ID 5=10\r\n";
    QTest::newRow("alarm without subject")
        << 3 << ""
        << "From: disks@example.org\r\nTo: admin@example.org\r\nSubject: \r\n"
           "ALARM from (tower) 2026-11-15 00:36:07\r\n"
           "ID: 0 WDC\r\n   Parameter ID 5=10\r\n";
}

void TestAlertMail::alertMessage()
{
    QFETCH(int, alertLevel);
    QFETCH(QString, subject);
    Settings settings;
    settings.smtpFrom = QStringLiteral("disks@example.org");
    settings.smtpTo = QStringLiteral("admin@example.org");
    settings.smtpSubj = subject;
    const SmtpMail mail = alertMail(alertLevel, QStringLiteral("ID: 0 WDC\n   Parameter ID 5=10"), settings,
                                    QStringLiteral("tower"), QDateTime(QDate(2026, 11, 15), QTime(0, 36, 7)));
    QTEST(mail.message, "message");
}

void TestAlertMail::settingsAreTaken()
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

void TestAlertMail::testFields()
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
    QCOMPARE(mail->message, QStringLiteral("From: a@b\r\nTo: c@d\r\nSubject: Hello\r\nfirst\r\nsecond\r\n"));
}

void TestAlertMail::missingTestFields()
{
    QVERIFY(!testMail(QStringLiteral("25~;0~;a~;b~;c~;d~;e~;f")));
    QVERIFY(testMail(QStringLiteral("25~;0~;a~;b~;c~;d~;e~;f~;")));
}

void TestAlertMail::textOfTestMail_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("sent"); // what follows the headers
    QTest::newRow("dot") << "ab\n.\ncd"
                         << "ab\r\n..\r\ncd\r\n";
    QTest::newRow("any one character") << "ab\nx\ncd"
                                       << "ab\r\n..\r\ncd\r\n";
    QTest::newRow("first line") << ".\ncd"
                                << "..\r\ncd\r\n";
    QTest::newRow("last line") << "ab\n."
                               << "ab\r\n..\r\n";
    QTest::newRow("two in a row") << "ab\n.\n.\ncd"
                                  << "ab\r\n..\r\n.\r\ncd\r\n";
    QTest::newRow("three in a row") << "ab\n.\nx\n.\ncd"
                                    << "ab\r\n..\r\nx\r\n..\r\ncd\r\n";
    QTest::newRow("two characters") << "ab\n..\ncd"
                                    << "ab\r\n..\r\ncd\r\n";
    QTest::newRow("dot that begins a line") << "ab\n.b\nef"
                                            << "ab\r\n.b\r\nef\r\n";
    QTest::newRow("empty lines") << "ab\n\n\ncd"
                                 << "ab\r\n\r\n\r\ncd\r\n";
    QTest::newRow("CR LF already") << "ab\r\ncd"
                                   << "ab\r\r\ncd\r\n";
    QTest::newRow("CR alone on its line") << "ab\n\r\ncd"
                                          << "ab\r\n..\r\ncd\r\n";
    QTest::newRow("empty") << ""
                           << "\r\n";
}

void TestAlertMail::textOfTestMail()
{
    QFETCH(QString, text);
    const auto mail = testMail(QStringLiteral("25~;0~;a~;b~;c~;d~;e~;f~;") + text);
    QVERIFY(mail);
    QTEST(mail->message.mid(QStringLiteral("From: a\r\nTo: b\r\nSubject: d\r\n").size()), "sent");
}

QTEST_APPLESS_MAIN(TestAlertMail)
#include "tst_alert_mail.moc"
