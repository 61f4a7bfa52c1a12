// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_mail.h"

#include "rows.h"

namespace {

QString shown(const SmtpMail &mail)
{
    const QStringList fields{
        mail.server, QString::number(mail.port), mail.user, mail.password, mail.from, mail.to, mail.message};
    return (mail.needAuth ? QStringLiteral("login ") : QString()) + fields.join(u' ');
}

} // namespace

class TestAlertMail : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void mails_data()
    {
        QTest::addColumn<QString>("mail");
        QTest::addColumn<QString>("expected");
        Settings settings;
        settings.smtpNeedAuth = true;
        settings.smtpServer = "mail";
        settings.smtpPort = 2525;
        settings.smtpUser = "user";
        settings.smtpPass = "secret";
        settings.smtpFrom = "a@b";
        settings.smtpTo = "c@d";
        settings.smtpSubj = "Disk trouble";
        row("warning",
            shown(alertMail("WARNING", "ID: 0 WDC\n   Parameter ID 5=10", settings, "tower",
                            QDateTime(QDate(2026, 11, 15), QTime(0, 36, 7)))),
            "login mail 2525 user secret a@b c@d From: a@b\r\nTo: c@d\r\nSubject: Disk trouble\r\n"
            "WARNING from (tower) 2026-11-15 00:36:07\r\nID: 0 WDC\r\n   Parameter ID 5=10\r\n");
        MailTest test{25, false, "a\rX: 1", "b\r\nX: 2", "c", "d\nX: 3", "e", "f", {}};
        row("test whose headers end at their first line end", shown(testMail(test)),
            "c 25 e f a\rX: 1 b\r\nX: 2 From: a\r\nTo: b\r\nSubject: d\r\n\r\n");
        test.needAuth = true;
        test.text = "first\nsecond";
        row("test with login and text", shown(testMail(test)),
            "login c 25 e f a\rX: 1 b\r\nX: 2 From: a\r\nTo: b\r\nSubject: d\r\nfirst\r\nsecond\r\n");

        const auto text = [&test](const char *sent) {
            test.text = QLatin1String(sent);
            return testMail(test).message.section("\r\n", 3); // after the headers
        };
        row("line of a single dot → doubled", text("ab\n.\ncd"), "ab\r\n..\r\ncd\r\n");
        row("line of one character becomes two dots", text("ab\nx\ncd"), "ab\r\n..\r\ncd\r\n");
        row("first line", text(".\ncd"), "..\r\ncd\r\n");
        row("last line", text("ab\n."), "ab\r\n..\r\n");
        row("three in a row", text("ab\n.\nx\n.\ncd"), "ab\r\n..\r\nx\r\n..\r\ncd\r\n");
        row("two characters", text("ab\n..\ncd"), "ab\r\n..\r\ncd\r\n");
        row("dot that begins a line", text("ab\n.b\nef"), "ab\r\n.b\r\nef\r\n");
        row("empty lines", text("ab\n\n\ncd"), "ab\r\n\r\n\r\ncd\r\n");
        row("CR LF already", text("ab\r\ncd"), "ab\r\r\ncd\r\n");
        row("CR alone on its line", text("ab\n\r\ncd"), "ab\r\n..\r\ncd\r\n");
    }

    void mails()
    {
        QFETCH(QString, mail);
        QTEST(mail, "expected");
    }
};

QTEST_APPLESS_MAIN(TestAlertMail)
#include "tst_alert_mail.moc"
