// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/reply_text.h"

#include "rows.h"
#include "wire/separators.h"

/// Requests whose effect depends on the console's address.
class TestPermissions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void managesAlarms_data()
    {
        QTest::addColumn<QString>("peer"); // empty: the local socket
        QTest::addColumn<bool>("option");
        QTest::addColumn<bool>("isAllowed");
        row("local socket → allowed", "", false, true);
        row("this machine → allowed", "127.0.0.2", false, true);
        row("this machine over IPv6 → allowed", "::1", false, true);
        row("another machine → refused", "192.0.2.1", false, false);
        row("another machine over IPv6 → refused", "2001:db8::1", false, false);
        row("another machine with the option → allowed", "192.0.2.1", true, true);
    }

    /// The option RemoteAcknowledge. What is refused reaches no object behind the protocol.
    void managesAlarms()
    {
        QFETCH(QString, peer);
        QFETCH(bool, option);
        QFETCH(bool, isAllowed);
        const QHostAddress address(peer);
        FakeTarget target;
        target.serviceOptions.remoteAcknowledge = option;
        const auto expected = [isAllowed](const char *word, const char *reply) {
            return isAllowed ? QLatin1String(word) + QLatin1String(reply)
                             : QLatin1String(word) + "_ERR,only consoles of the service's "
                                                     "machine may do this, unless "
                                                     "RemoteAcknowledge is 1";
        };
        QCOMPARE(replyTo("X-ACK]![S1]![]![", target, address), expected("X-ACK", "_OK,2"));
        QCOMPARE(replyTo("X-FORGET]![S1", target, address), expected("X-FORGET", "_OK"));
        QCOMPARE(replyTo("X-ALERTTEST", target, address), expected("X-ALERTTEST", "_OK]![[]"));
        QCOMPARE(target.calls.size(), isAllowed ? 2 : 0);
        QVERIFY(replyTo("X-ALERTS", target, address).startsWith("X-ALERTS_OK]!["));
    }

    void protectedMail_data()
    {
        QTest::addColumn<QString>("peer"); // empty: the local socket
        QTest::addColumn<QString>("sentPassword");
        QTest::addColumn<QString>("password");
        QTest::addColumn<QString>("server");
        QTest::addColumn<bool>("emailNotify");
        row("console of the network", "192.0.2.1", "new", "old", "old.example", true);
        row("console of this machine over TCP", "127.0.0.1", "new", "old", "old.example", true);
        row("local socket without a password", "", "", "old", "new.example", false);
        row("local socket with a password", "", "new", "new", "new.example", false);
    }

    /// The option ProtectMail; what does not belong to mail is set all the same.
    void protectedMail()
    {
        QFETCH(QString, peer);
        QFETCH(QString, sentPassword);
        FakeTarget target;
        target.serviceOptions.protectMail = true;
        target.settingsRecord.emailNotify = true;
        target.settingsRecord.smtpServer = "old.example";
        target.settingsRecord.smtpPass = "old";
        const QString set = "SET]![5000~;1~;1~;1~;0~;0~;f~;t~;s~;new.example~;1~;u~;%1~;26~;50~;"
                            "60~;w~;c";
        QCOMPARE(replyTo(set.arg(sentPassword), target, QHostAddress(peer)), "SET_OK");
        QTEST(target.settingsRecord.smtpPass, "password");
        QTEST(target.settingsRecord.smtpServer, "server");
        QTEST(target.settingsRecord.emailNotify, "emailNotify");
        QCOMPARE(target.settingsRecord.wTemp, 50);
        const QStringList greeted = Dispatcher(target).firstLine({"42", {}}).split(kRequestSeparator);
        QCOMPARE(greeted.value(17), QString());
        QVERIFY(!greeted.contains(target.settingsRecord.smtpPass));
    }
};

QTEST_GUILESS_MAIN(TestPermissions)
#include "tst_permissions.moc"
