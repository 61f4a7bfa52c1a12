// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_delivery.h"

#include "monitor/scripted_peer.h"
#include "monitor/smtp_sender.h"
#include "platform/event_log.h"
#include "rows.h"

namespace {

/// Each event as a text: source, type, number, category and text.
struct EventList : EventLog
{
    void report(const Event &event) override
    {
        events += QStringLiteral("%1 %2 %3 %4: ")
                      .arg(event.source)
                      .arg(int(event.type))
                      .arg(event.id)
                      .arg(event.category) +
                  event.text;
    }

    QStringList events;
};

HealthReport alert(qint32 alertLevel)
{
    HealthReport report;
    report.alertLevel = alertLevel;
    report.alertText = QStringLiteral("ID: 0 WDC\n   Parameter ID 5=10");
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
        row("fine", 1, true, true, "", false);
        row("warning as event", 2, true, false, "Halvex 2 2 0: ID: 0 WDC\n   Parameter ID 5=10", false);
        row("warning as mail", 2, false, true, "", true);
        row("alarm as both", 3, true, true, "Halvex 1 3 0: ID: 0 WDC\n   Parameter ID 5=10", true);
        row("alarm as none", 3, false, false, "", false);
    }

    void delivers()
    {
        QFETCH(int, alertLevel);
        QFETCH(bool, logSysEvLog);
        QFETCH(bool, emailNotify);
        Settings settings;
        settings.logSysEvLog = logSysEvLog;
        settings.emailNotify = emailNotify;
        EventList log;
        smtp_sender sender;
        deliverAlert(alert(alertLevel), settings, log, sender);
        QTEST(log.events.join(u'\n'), "events");
        QTEST(sender.isBusy(), "mail");
    }

    void busySenderLosesTheMail()
    {
        ScriptedPeer peer({"554 go away\r\n"});
        Settings settings;
        settings.emailNotify = true;
        settings.smtpServer = QStringLiteral("127.0.0.1");
        settings.smtpPort = peer.serverPort();
        EventList log;
        smtp_sender sender;
        QSignalSpy ended(&sender, &smtp_sender::smtpSenderError);
        deliverAlert(alert(2), settings, log, sender);
        deliverAlert(alert(3), settings, log, sender);
        QVERIFY(!startTestMail(sender, QStringLiteral("25~;0~;a~;b~;127.0.0.1~;d~;e~;f~;g")));
        QVERIFY(ended.wait());
        QVERIFY(!sender.isBusy()); // and no second mail has waited for that
        QCOMPARE(peer.connectionCount(), 1);
    }
};

QTEST_GUILESS_MAIN(TestAlertDelivery)
#include "tst_alert_delivery.moc"
