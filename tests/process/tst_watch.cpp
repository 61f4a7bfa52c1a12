// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTcpServer>
#include <QTest>

#include <csignal>

namespace {

constexpr int kWatchPatienceMs = 60000;

QJsonObject machineWithTemperature(int celsius)
{
    const QJsonObject attribute{{QStringLiteral("id"), 194},      {QStringLiteral("flags"), 34},
                                {QStringLiteral("current"), 100}, {QStringLiteral("worst"), 90},
                                {QStringLiteral("threshold"), 0}, {QStringLiteral("raw"), celsius}};
    const QJsonObject drive{
        {QStringLiteral("number"), 3},
        {QStringLiteral("model"), QStringLiteral("WARM DRIVE")},
        {QStringLiteral("serial"), QStringLiteral("W-1")},
        {QStringLiteral("capacity"), 1000204886016.0},
        {QStringLiteral("smart"), QJsonObject{{QStringLiteral("attributes"), QJsonArray{attribute}}}}};
    return {{QStringLiteral("drives"), QJsonArray{drive}}};
}

/// A mail server that takes everything.
class MailSink : public QTcpServer
{
public:
    MailSink()
    {
        listen(QHostAddress::LocalHost);
        connect(this, &QTcpServer::newConnection, this, [this] {
            QTcpSocket *const socket = nextPendingConnection();
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] { take(socket); });
            socket->write("220 sink\r\n");
        });
    }

    [[nodiscard]] QByteArray received() const { return m_received; }

private:
    void take(QTcpSocket *socket)
    {
        while (socket->canReadLine()) {
            const QByteArray line = socket->readLine();
            m_received += line;
            if (m_inMessage && line != ".\r\n")
                continue;
            m_inMessage = line == "DATA\r\n";
            socket->write(m_inMessage ? "354 go on\r\n" : "250 fine\r\n");
        }
    }

    QByteArray m_received;
    bool m_inMessage = false;
};

/// SET's 18 items, with `mark` in every text.
QString settingsCommand(const QString &mark, int eventLog, int mail, quint16 smtpPort)
{
    const QStringList items{QStringLiteral("0"),
                            QStringLiteral("200"),
                            QStringLiteral("300000"),
                            QStringLiteral("1"),
                            QString::number(mail),
                            QString::number(eventLog),
                            QStringLiteral("from-") + mark,
                            QStringLiteral("to-") + mark,
                            QStringLiteral("subject-") + mark,
                            QStringLiteral("127.0.0.1"),
                            QStringLiteral("0"),
                            QStringLiteral("user-") + mark,
                            QStringLiteral("password-") + mark,
                            QString::number(smtpPort),
                            QStringLiteral("55"),
                            QStringLiteral("65"),
                            QStringLiteral("warn-") + mark,
                            QStringLiteral("crit-") + mark};
    return QStringLiteral("SET]![") + items.join(QStringLiteral("~;"));
}

QStringList greetingOf(const ServiceFixture &service)
{
    return RawConsole(service.port()).readLine().split(QStringLiteral("]!["));
}

} // namespace

/// What an administrator relies on day after day: alarms, settings that last, bad days survived.
class TestWatch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void heatedDrive()
    {
        MailSink sink;
        ServiceFixture service;
        service.setKeyValue(QStringLiteral("SMARTPollInterval"), 1);
        service.writeMachine(machineWithTemperature(30));
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(greetingOf(service).value(6), QStringLiteral("1"));
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        QCOMPARE(console.ask(settingsCommand(QStringLiteral("a"), 1, 1, sink.serverPort())),
                 QStringLiteral("SET_OK"));

        const QString block = QStringLiteral("ID: 3 WARM DRIVE\n   Temperature=70 Celsius (158 Fahrengeit)");
        QVERIFY(!service.eventTexts().contains(block));
        service.writeMachine(machineWithTemperature(70));
        QTRY_VERIFY_WITH_TIMEOUT(service.eventTexts().contains(block), kWatchPatienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(sink.received().contains("QUIT\r\n"), kWatchPatienceMs);
        QVERIFY2(sink.received().contains("Subject: subject-a\r\nALARM from ("), sink.received());
        QVERIFY2(sink.received().contains(
                     "\r\nID: 3 WARM DRIVE\r\n   Temperature=70 Celsius (158 Fahrengeit)\r\n.\r\n"),
                 sink.received());
        QCOMPARE(greetingOf(service).value(6), QStringLiteral("3"));

        service.writeMachine(machineWithTemperature(31));
        QTRY_COMPARE_WITH_TIMEOUT(greetingOf(service).value(6), QStringLiteral("1"), kWatchPatienceMs);

        // Drive 0 of the list at 30, 70 and 31 degrees: "!" and the degree's character end each record.
        const QString history = console.ask(QStringLiteral("GSTATD]![260101000000]![991231235959"));
        QVERIFY2(history.startsWith(QLatin1String("STATD]![")), qPrintable(history));
        for (const char *record : {"!?", "!g", "!@"})
            QVERIFY2(history.contains(QLatin1String(record)), qPrintable(history));
        QCOMPARE(service.stop(), 0);
    }

    /// A thousand SETs, and a kill in the middle of every fiftieth: what is read back is one of the two
    /// states.
    void settingsSurviveKills()
    {
        constexpr int kRounds = 20;
        constexpr int kSetsPerRound = 50;
        const QString marks[] = {QString(2000, QLatin1Char('a')), QString(3000, QLatin1Char('b'))};
        ServiceFixture service;
        service.writeMachine(machineWithTemperature(30));
        for (int round = 0; round < kRounds; ++round) {
            QVERIFY2(service.serve(), service.output());
            if (round > 0) {
                const QStringList fields = greetingOf(service);
                const QString mark = fields.value(10).mid(5);
                QVERIFY2(mark == marks[0] || mark == marks[1], qPrintable(fields.value(10)));
                const QStringList texts{fields.value(11), fields.value(12), fields.value(16),
                                        fields.value(17), fields.value(21), fields.value(22)};
                QCOMPARE(texts,
                         QStringList({QStringLiteral("to-") + mark, QStringLiteral("subject-") + mark,
                                      QStringLiteral("user-") + mark, QStringLiteral("password-") + mark,
                                      QStringLiteral("warn-") + mark, QStringLiteral("crit-") + mark}));
            }
            RawConsole console(service.port());
            QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
            QCOMPARE(console.ask(settingsCommand(marks[round % 2], 0, 0, 25)), QStringLiteral("SET_OK"));
            for (int i = 0; i < kSetsPerRound; ++i)
                console.send(settingsCommand(marks[i % 2], 0, 0, 25));
            const int answersBeforeTheKill = QRandomGenerator::global()->bounded(5);
            for (int i = 0; i < answersBeforeTheKill; ++i)
                QCOMPARE(console.ask(settingsCommand(marks[i % 2], 0, 0, 25)), QStringLiteral("SET_OK"));
            service.process().kill();
            QVERIFY(service.process().waitForFinished());
        }
    }

    /// Lines that are damaged count for nothing; the others count.
    void damagedSettingsFile()
    {
        ServiceFixture service;
        service.writeMachine(machineWithTemperature(30));
        QVERIFY2(service.serve(), service.output());
        {
            RawConsole console(service.port());
            QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
            QCOMPARE(console.ask(settingsCommand(QStringLiteral("kept"), 0, 0, 2525)),
                     QStringLiteral("SET_OK"));
        }
        QCOMPARE(service.stop(), 0);

        QFile file(service.path(QStringLiteral("HalvexService.ini")));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QList<QByteArray> lines = file.readAll().split('\n');
        file.close();
        QVERIFY(lines.size() > 15);
        lines[6].chop(3);                     // smtpPort: shorter than its header says
        lines[7] = QByteArray(70000, '\xfe'); // smtpFrom: noise
        lines[9].replace(0, 8, "ffffffff");   // smtpSubj: a wrong header
        lines.insert(3, QByteArray("\0\0\0", 3));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(lines.join('\n'));
        file.close();

        QVERIFY2(service.serve(), service.output());
        const QStringList fields = greetingOf(service);
        QCOMPARE(fields.mid(10, 5), QStringList({QString(), QStringLiteral("to-kept"), QString(),
                                                 QStringLiteral("127.0.0.1"), QStringLiteral("25")}));
        QCOMPARE(service.stop(), 0);
    }

    void logThatCannotBeWritten()
    {
        ServiceFixture service;
        service.setKeyValue(QStringLiteral("SMARTPollInterval"), 1);
        service.writeMachine(machineWithTemperature(30));
        QVERIFY(
            QDir(service.home()).mkdir(QStringLiteral("temperature.log"))); // opens for nobody, root included
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        QCOMPARE(console.ask(QStringLiteral("REFRESH")), QStringLiteral("REFRESH_OK"));
        QCOMPARE(console.ask(QStringLiteral("GSTATR]![260101000000]![991231235959")),
                 QStringLiteral("STATR]!["));
        QVERIFY(QDir(service.home()).rmdir(QStringLiteral("temperature.log")));
        QTRY_VERIFY_WITH_TIMEOUT(
            console.ask(QStringLiteral("GSTATR]![260101000000]![991231235959")).size() > 8, kWatchPatienceMs);
        QCOMPARE(service.stop(), 0);
    }

    void mailServerThatIsNotThere()
    {
        ServiceFixture service;
        service.writeMachine(machineWithTemperature(30));
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        const QString refused = QStringLiteral("SMTPTEST]![1~;0~;a@b~;c@d~;127.0.0.1~;s~;~;~;text");
        QCOMPARE(
            console.ask(refused),
            QStringLiteral("SMTPTEST_OK]![SMTP error: ConnectionRefusedError. Check Your SMTP Settings."));
        const QString nameless =
            QStringLiteral("SMTPTEST]![25~;0~;a@b~;c@d~;no-such-host.invalid~;s~;~;~;text");
        QVERIFY(console.ask(nameless).startsWith(QLatin1String("SMTPTEST_OK]![SMTP error: ")));
        QCOMPARE(service.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestWatch)

#include "tst_watch.moc"
