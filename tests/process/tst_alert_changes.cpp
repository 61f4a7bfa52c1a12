// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
#include "monitor/webhook_server.h"
#include "process/mail_server.h"
#include "process/service_fixture.h"
#include "rows.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTest>

namespace {

QJsonObject drive(int celsius)
{
    QJsonObject machine = json(R"({"drives": [{"number": 3, "model": "WARM DRIVE", "serial": "S1", "smart": {
        "attributes": [{"id": 194, "current": 100, "worst": 90, "raw": -1}]}}]})");
    return QJsonDocument::fromJson(QJsonDocument(machine).toJson().replace("-1", QByteArray::number(celsius)))
        .object();
}

QString settings(quint16 mailPort, int mail)
{
    return QString("SET]![0~;180000~;300000~;1~;%2~;1~;disks@example.org~;admin@example.org~;Disk trouble~;"
                   "127.0.0.1~;0~;user~;mail-secret~;%1~;55~;65~;~;")
        .arg(mailPort)
        .arg(mail);
}

/// A service that reports changes and keeps its files in its folder.
struct ChangesService : ServiceFixture
{
    explicit ChangesService(int celsius)
    {
        setKeyValue("AlertPolicy", "changes");
        setKeyValue("ImagePath", path("halvex-monitor-service"));
        writeMachine(drive(celsius));
    }
};

} // namespace

/// The policy `changes`, encrypted mail and the channels, with the real service.
class TestAlertChanges : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void badOptionStopsTheStart()
    {
        ServiceFixture service;
        service.writeMachine(drive(30));
        service.setKeyValue("AlertPolicy", "sometimes");
        QVERIFY(!service.start());
        QCOMPARE(service.process().exitCode(), 1);
        for (const QByteArray &text : {service.output(), service.events()})
            QVERIFY2(text.contains("AlertPolicy"), text);
    }

    void mailSecurity_data()
    {
        QTest::addColumn<QString>("security");
        QTest::addColumn<QString>("names"); // of the server's certificate
        QTest::addColumn<int>("days");      // its lifetime
        QTest::addColumn<bool>("isKnown");  // its authority
        QTest::addColumn<QString>("error"); // empty: the mail arrives
        const QString here = "IP:127.0.0.1";
        row("STARTTLS", "starttls", here, 30, true, "");
        row("TLS from the start", "tls", here, 30, true, "");
        row("expired certificate", "starttls", here, -1, true, "expired");
        row("expired certificate from the start", "tls", here, -1, true, "expired");
        row("certificate of another host", "starttls", "DNS:other.example", 30, true, "host name");
        row("unknown authority", "starttls", here, 30, false, "issuer");
    }

    void mailSecurity()
    {
        QFETCH(QString, security);
        QFETCH(QString, names);
        QFETCH(int, days);
        QFETCH(bool, isKnown);
        QFETCH(QString, error);
        const TestAuthority other;
        MailServer server({true, m_authority.certificateFor(names, days), security == "tls"});
        QVERIFY2(server.start(), server.output());
        ServiceFixture service;
        service.writeMachine(drive(30));
        service.setKeyValue("SmtpSecurity", security);
        service.setKeyValue("SmtpCaFile", isKnown ? m_authority.caFile() : other.caFile());
        QVERIFY2(service.serve(), service.output());
        const QString dialogue =
            service.ask(QString("SMTPTEST]![%1~;1~;disks@example.org~;admin@example.org~;"
                                "127.0.0.1~;Hello~;user~;secret~;text")
                            .arg(server.port()));
        if (error.isEmpty()) {
            QTRY_VERIFY2_WITH_TIMEOUT(server.mailbox().contains("Subject: Hello"), qPrintable(dialogue),
                                      kPatienceMs);
        } else {
            QVERIFY2(dialogue.contains("SMTP error: TLS: "), qPrintable(dialogue));
            QVERIFY2(dialogue.contains(error), qPrintable(dialogue));
            QVERIFY2(server.mailbox().isEmpty(), server.log());
            QVERIFY2(!server.log().contains("AUTH"), server.log());
        }
    }

    /// Webhook and mail server are down when the drive gets hot; the service is killed; both servers return.
    void nothingIsLostOrRepeated()
    {
        MailServer mail({});
        QVERIFY2(mail.start(), mail.output());
        WebhookServer webhook;
        ChangesService service(30);
        service.setKeyValue("AlertWebhook", webhook.url("hook-secret").toString());
        service.setVariable("QT_LOGGING_RULES", "*=true");
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask(settings(mail.port(), 1)), "SET_OK");
        mail.stop();
        webhook.close();

        service.writeMachine(drive(70));
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QTRY_VERIFY_WITH_TIMEOUT(channelFailures(service) == 2, kPatienceMs);
        QCOMPARE(secretsShown(service), QStringList()); // with the reasons of the failures
        service.process().kill();
        QVERIFY(service.process().waitForFinished(kPatienceMs));
        const QByteArray firstEvents = service.events();
        QCOMPARE(firstEvents.count("\"source\":\"Halvex\""), 1);

        QVERIFY(webhook.open());
        QVERIFY(mail.restart());
        QVERIFY2(service.serve(), service.output());
        service.writeMachine(drive(31));
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QTRY_COMPARE_WITH_TIMEOUT(webhook.events(), (QStringList{"alert critical", "recovery fine"}),
                                  kPatienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(mail.mailbox().contains("RECOVERY from ("), kPatienceMs);
        QCOMPARE(mail.mailbox().count("ALARM from ("), 1);
        QVERIFY(mail.mailbox().indexOf("ALARM") < mail.mailbox().indexOf("RECOVERY"));
        QVERIFY(
            service.events().contains("{\"category\":0,\"id\":1,\"source\":\"Halvex\",\"text\":\"ID: 3 WARM "
                                      "DRIVE\\n   Recovered\",\"type\":4}"));
        QVERIFY(service.ask("X-ALERTS").contains("\"findings\":[]"));
        QCOMPARE(secretsShown(service), QStringList());
        QCOMPARE(service.stop(), 0);
    }

    void acknowledgedDriveStaysSilentOverARestart()
    {
        ChangesService service(70);
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask("X-ACK]![WARM DRIVE/S1]![temperature]!["), "X-ACK_OK,1");
        QCOMPARE(service.ask("X-ACK]![S1]![growth]!["), "X-ACK_OK,0");
        service.process().kill();
        QVERIFY(service.process().waitForFinished(kPatienceMs));
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask(settings(1, 0)), "SET_OK"); // switches the event log on
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QVERIFY2(!service.events().contains("Celsius"), service.events());
        QVERIFY(service.ask("X-ALERTS").contains("\"acknowledged\":true"));
        service.writeMachine(drive(75));
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QVERIFY2(service.events().contains("75 Celsius"), service.events());
    }

    /// The drive is pulled, and forgotten while it is gone.
    void forgottenDrive()
    {
        ChangesService service(30);
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask("X-FORGET]![S1"), "X-FORGET_ERR,the drive is listed");
        QCOMPARE(service.ask(settings(1, 0)), "SET_OK");
        service.writeMachine(json(R"({"drives": []})"));
        service.ask("RESET");
        QTRY_VERIFY_WITH_TIMEOUT(service.events().contains("Drive not readable"), kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(service.ask("DEVCOUNT"), "DEVCOUNT,0", kPatienceMs);
        QCOMPARE(service.ask("X-FORGET]![S1"), "X-FORGET_OK");
        QVERIFY(service.ask("X-ALERTS").contains("\"findings\":[]"));
        QVERIFY(!service.events().contains("Recovered"));
    }

    void protectedMail()
    {
        ServiceFixture service;
        service.writeMachine(drive(30));
        service.setKeyValue("ProtectMail", 1);
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask(settings(99, 1)), "SET_OK");
        QVERIFY2(!service.firstLine().contains("mail-secret"), qPrintable(service.firstLine()));
        QVERIFY2(!service.firstLine().contains("disks@example.org"), qPrintable(service.firstLine()));
    }

    void damagedState()
    {
        ChangesService service(30);
        writeFile(service.path("alerts.json"), "{\"drives\": [");
        QVERIFY2(service.serve(), service.output());
        QTRY_VERIFY_WITH_TIMEOUT(service.content("alerts.json").contains("WARM DRIVE"), kPatienceMs);
        const QStringList aside = QDir(service.home()).entryList({"alerts.json.damaged-*"});
        QCOMPARE(aside.size(), 1);
        QTRY_VERIFY_WITH_TIMEOUT(service.output().contains(aside.first().toUtf8()), kPatienceMs);
    }

private:
    /// Returns each secret of the channels with the place that shows it.
    static QStringList secretsShown(ServiceFixture &service)
    {
        const QMap<QString, QByteArray> places{
            {"log", service.output()},
            {"event log", service.events()},
            {"X-ALERTS", service.ask("X-ALERTS").toUtf8()},
            {"alerts.json", service.content("alerts.json")},
            {"process list", contentOf(QString("/proc/%1/cmdline").arg(service.processId()))}};
        QStringList shown;
        for (auto place = places.cbegin(); place != places.cend(); ++place) {
            if (place.value().isEmpty())
                shown << place.key() + " is empty";
            for (const char *secret : {"hook-secret", "mail-secret", "bWFpbC1zZWNyZXQ"}) {
                if (place.value().contains(secret))
                    shown << place.key() + ": " + QLatin1String(secret);
            }
        }
        return shown;
    }

    /// Returns how many channels have a stored failure.
    static int channelFailures(const ServiceFixture &service)
    {
        const QJsonObject channels =
            QJsonDocument::fromJson(service.content("alerts.json")).object().value("channels").toObject();
        int failures = 0;
        for (const QJsonValue &channel : channels)
            failures += channel.toObject().value("reason").toString().isEmpty() ? 0 : 1;
        return failures;
    }

    TestAuthority m_authority;
};

QTEST_GUILESS_MAIN(TestAlertChanges)
#include "tst_alert_changes.moc"
