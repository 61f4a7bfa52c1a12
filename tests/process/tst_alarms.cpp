// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/mail_server.h"
#include "process/service_fixture.h"
#include "rows.h"

#include <QRegularExpression>
#include <QTest>

namespace {

QJsonObject warmDrive(const QByteArray &celsius)
{
    return json(R"({"drives": [{"number": 3, "model": "WARM DRIVE", "smart": {"attributes": [
        {"id": 194, "current": 100, "worst": 90, "raw": )" +
                celsius + "}]}}]}");
}

} // namespace

/// Alerts in the event log, and by mail through a real server.
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

    /// The server adds the empty line between headers and text, and removes the first dot of each line that
    /// begins with one; the service sends every line of one character as two dots.
    void testMail()
    {
        QFETCH(bool, needAuth);
        QFETCH(QString, mail);
        QFETCH(QString, lastReply);
        MailServer server({needAuth, {}, false});
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
        MailServer server({});
        QVERIFY2(server.start(), server.output());
        const QString settings = "SET]![0~;180000~;300000~;1~;1~;1~;disks@example.org~;admin@example.org~;"
                                 "Disk trouble~;127.0.0.1~;0~;~;~;%1~;55~;65~;~;";
        QCOMPARE(m_service.ask(settings.arg(server.port())), "SET_OK");

        const QString text = "ID: 3 WARM DRIVE\n   Temperature=70 Celsius (158 Fahrengeit)";
        const QJsonObject entry{
            {"category", 0}, {"id", 3}, {"source", "Halvex"}, {"text", text}, {"type", 1}};
        const QByteArray event = QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
        for (const bool isHot : {true, false}) {
            QVERIFY(m_service.events().contains(event) != isHot);
            m_service.writeMachine(warmDrive(isHot ? "70" : "31"));
            QCOMPARE(m_service.ask("REFRESH"), "REFRESH_OK");
            QCOMPARE(m_service.firstLine().split("]![").value(6), QString(isHot ? "3" : "1"));
            QVERIFY(m_service.events().contains(event));
        }
        QTRY_VERIFY_WITH_TIMEOUT(!server.mailbox().isEmpty(), kPatienceMs);
        const QRegularExpression mail(
            "\\AFrom: disks@example.org\nTo: admin@example.org\nSubject: Disk trouble\n"
            "\nALARM from \\(.*\\) \\d{4}-.*\n" +
            QRegularExpression::escape(text) + "\n\\z");
        QVERIFY2(mail.match(QString::fromLatin1(server.mailbox())).hasMatch(), server.mailbox());

        // Drive 0 at 30, 70 and 31 degrees: "!" and the character of the temperature end each record.
        const QString history = m_service.ask("GSTATD]![260101000000]![991231235959");
        for (const char *record : {"!?", "!g", "!@"})
            QVERIFY2(history.contains(QLatin1String(record)), qPrintable(history));
    }

private:
    ServiceFixture m_service; ///< one drive, cool at first
};

QTEST_GUILESS_MAIN(TestAlarms)
#include "tst_alarms.moc"
