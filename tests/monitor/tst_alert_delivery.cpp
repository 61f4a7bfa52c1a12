// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_delivery.h"

#include "monitor/alert_mail.h"
#include "monitor/scripted_peer.h"
#include "monitor/smtp_sender.h"
#include "platform/event_log.h"
#include "rows.h"

namespace {

/// Formats each event as a text: source, type, number, category and text.
struct EventList : EventLog
{
    explicit EventList(const smtp_sender &mailSender)
        : sender(mailSender)
    {}

    void report(const Event &event) override
    {
        mailWasFirst = mailWasFirst || sender.isBusy();
        events += QString("%1 %2 %3 %4: ")
                      .arg(event.source)
                      .arg(int(event.type))
                      .arg(event.id)
                      .arg(event.category) +
                  event.text;
    }

    const smtp_sender &sender;
    QStringList events;
    bool mailWasFirst = false;
};

HealthReport alert(qint32 alertLevel)
{
    HealthReport report;
    report.alertLevel = alertLevel;
    report.alertText = "ID: 0 WDC\n   Parameter ID 5=10";
    return report;
}

} // namespace

class TestAlertDelivery : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void delivers_data()
    {
        QTest::addColumn<int>("alertLevel");
        QTest::addColumn<bool>("logSysEvLog");
        QTest::addColumn<bool>("emailNotify");
        QTest::addColumn<QString>("events");
        QTest::addColumn<bool>("mail");
        row("nothing evaluated", 0, true, true, "", false);
        row("level fine → nothing", 1, true, true, "", false);
        row("warning as event", 2, true, false, "Halvex 2 2 0: ID: 0 WDC\n   Parameter ID 5=10", false);
        row("warning as mail", 2, false, true, "", true);
        row("critical alert as event and mail", 3, true, true,
            "Halvex 1 3 0: ID: 0 WDC\n   Parameter ID 5=10", true);
        row("critical alert with both switched off", 3, false, false, "", false);
    }

    void delivers()
    {
        QFETCH(int, alertLevel);
        QFETCH(bool, logSysEvLog);
        QFETCH(bool, emailNotify);
        Settings settings;
        settings.logSysEvLog = logSysEvLog;
        settings.emailNotify = emailNotify;
        smtp_sender sender;
        EventList log(sender);
        AlertDelivery(log, sender).deliver(alert(alertLevel), settings);
        QTEST(log.events.join(u'\n'), "events");
        QVERIFY(!log.mailWasFirst);
        QTEST(sender.isBusy(), "mail");
    }

    /// A fault is reported when it starts, when its reason changes and when it ends.
    void changesOfAFault()
    {
        const QDateTime ten(QDate(2026, 11, 15), QTime(10, 0, 0));
        FaultState mail("Mail");
        QCOMPARE(mail.succeeded(), QString());
        QCOMPARE(mail.failed("mute", ten), "Mail has failed since 2026-11-15 10:00:00: mute");
        QCOMPARE(mail.failed("mute", ten.addSecs(60)), QString());
        QCOMPARE(mail.failed("refused", ten.addSecs(120)),
                 "Mail has failed since 2026-11-15 10:00:00: refused");
        QCOMPARE(mail.succeeded(), "Mail works again; it had failed since 2026-11-15 10:00:00");
        QCOMPARE(mail.succeeded(), QString());
    }

    /// Every evaluation delivers again; while the sender is busy, only to the event log.
    void secondEvaluation()
    {
        ScriptedPeer peer({"554 go away\r\n", "554 go away\r\n"});
        Settings settings;
        settings.emailNotify = true;
        settings.logSysEvLog = true;
        settings.smtpServer = "127.0.0.1";
        settings.smtpPort = peer.serverPort();
        smtp_sender sender;
        EventList log(sender);
        AlertDelivery delivery(log, sender);
        int runs = 0;
        connect(&sender, &smtp_sender::smtpSenderError, this, [&] { ++runs; });
        delivery.deliver(alert(2), settings);
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral(
                                 "Alert mail has failed since .*busy, connecting to 127.0.0.1 port ")));
        delivery.deliver(alert(2), settings);
        QCOMPARE(log.events.size(), 2);
        QVERIFY(!delivery.startTestMail(MailTest()));
        QTRY_COMPARE(runs, 1);
        QVERIFY(!sender.isBusy()); // the dropped mail was not queued
        delivery.deliver(alert(2), settings);
        QTRY_COMPARE(runs, 2);
        QCOMPARE(peer.connectionCount(), 2);
    }
};

QTEST_GUILESS_MAIN(TestAlertDelivery)
#include "tst_alert_delivery.moc"
