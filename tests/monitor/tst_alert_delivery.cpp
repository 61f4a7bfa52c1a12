// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_delivery.h"

#include "monitor/smtp_sender.h"
#include "platform/event_log.h"
#include "rows.h"

#include <QHostInfo>
#include <QTcpServer>
#include <QTcpSocket>
#include <QtTest>

namespace {

struct EventList : EventLog
{
    void report(const Event &event) override { events.append(event); }

    QVector<Event> events;
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
    void channels_data()
    {
        QTest::addColumn<int>("alertLevel");
        QTest::addColumn<bool>("logSysEvLog");
        QTest::addColumn<bool>("emailNotify");
        QTest::addColumn<int>("events");
        QTest::addColumn<bool>("mail");
        row("nothing evaluated", 0, true, true, 0, false);
        row("fine", 1, true, true, 0, false);
        row("event alone", 2, true, false, 1, false);
        row("mail alone", 2, false, true, 0, true);
        row("both", 3, true, true, 1, true);
        row("none", 3, false, false, 0, false);
    }

    void channels()
    {
        QFETCH(int, alertLevel);
        Settings settings;
        QFETCH(bool, logSysEvLog);
        QFETCH(bool, emailNotify);
        settings.logSysEvLog = logSysEvLog;
        settings.emailNotify = emailNotify;
        EventList log;
        smtp_sender sender;
        deliverAlert(alert(alertLevel), settings, log, sender);
        QTEST(log.events.size(), "events");
        QTEST(sender.isBusy(), "mail");
    }

    void eventContents_data()
    {
        QTest::addColumn<int>("alertLevel");
        QTest::addColumn<int>("type");
        QTest::addColumn<int>("id");
        row("warning", 2, 2, 2);
        row("critical", 3, 1, 3);
    }

    void eventContents()
    {
        QFETCH(int, alertLevel);
        Settings settings;
        settings.logSysEvLog = true;
        EventList log;
        smtp_sender sender;
        deliverAlert(alert(alertLevel), settings, log, sender);
        QCOMPARE(log.events.size(), 1);
        const Event &event = log.events.first();
        QCOMPARE(event.source, QStringLiteral("Halvex"));
        QTEST(int(event.type), "type");
        QTEST(int(event.id), "id");
        QCOMPARE(event.category, quint16(0));
        QCOMPARE(event.text, QStringLiteral("ID: 0 WDC\n   Parameter ID 5=10"));
    }

    void busySenderLosesTheMail()
    {
        QTcpServer silentServer;
        QVERIFY(silentServer.listen(QHostAddress::LocalHost));
        QSignalSpy connections(&silentServer, &QTcpServer::newConnection);
        Settings settings;
        settings.logSysEvLog = true;
        settings.emailNotify = true;
        settings.smtpServer = QStringLiteral("127.0.0.1");
        settings.smtpPort = silentServer.serverPort();
        EventList log;
        smtp_sender sender;

        deliverAlert(alert(2), settings, log, sender);
        QVERIFY(connections.wait());
        deliverAlert(alert(3), settings, log, sender);
        QCOMPARE(log.events.size(), 2);
        QVERIFY(!startTestMail(sender, QStringLiteral("25~;0~;a~;b~;127.0.0.1~;d~;e~;f~;g")));

        // The first mail's connection goes on; no second one is made once the sender is free.
        QSignalSpy ended(&sender, &smtp_sender::smtpSenderError);
        silentServer.nextPendingConnection()->abort();
        QVERIFY(ended.wait());
        QVERIFY(!sender.isBusy());
        QCOMPARE(connections.count(), 1);
    }
};

QTEST_GUILESS_MAIN(TestAlertDelivery)
#include "tst_alert_delivery.moc"
