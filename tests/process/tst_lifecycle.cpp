// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"
#include "rows.h"

#include <QElapsedTimer>
#include <QJsonDocument>
#include <QTcpServer>
#include <QTest>

namespace {

/// Returns a drive at `celsius`, and a volume on it with `freeBytes`.
QJsonObject machine(int celsius, qint64 freeBytes)
{
    return json(QString(R"({"drives": [{"number": 0, "model": "DRIVE", "smart": {"attributes": [
                    {"id": 194, "current": 100, "worst": 90, "raw": %1}]}}],
                "volumes": [{"name": "\\\\?\\Volume{0001}\\", "letters": ["C"], "label": "System",
                    "deviceNumber": 0, "totalBytes": 500000000000, "freeBytes": %2}]})")
                    .arg(celsius)
                    .arg(freeBytes)
                    .toUtf8());
}

QByteArray eventLine(int type, const QString &text)
{
    const QJsonObject entry{
        {"category", 0}, {"id", 0}, {"source", "Halvex Service"}, {"text", text}, {"type", type}};
    return QJsonDocument(entry).toJson(QJsonDocument::Compact) + '\n';
}

QByteArray temperatureLog(const ServiceFixture &service)
{
    return service.content("temperature.log");
}

} // namespace

/// Start, periodic work, pausing and changes of settings.
class TestLifecycle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startUpEvents()
    {
        ServiceFixture service;
        service.writeMachine(machine(30, 1000));
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(
            service.events(),
            eventLine(0, QString("Binding to port: %1. Path to service: %2/. Version: Halvex Service v 5.0.5")
                             .arg(service.port())
                             .arg(service.home())) +
                eventLine(0, "Local server started. Path to service: " + service.home() +
                                 "/. Version: Halvex Service v 5.0.5"));
        QCOMPARE(service.stop(), 0);
    }

    void portInUse()
    {
        QTcpServer other;
        QVERIFY(other.listen(QHostAddress::Any));
        ServiceFixture service;
        service.setKeyValue("Port", other.serverPort());
        service.writeMachine(machine(30, 1000));
        service.launch();
        QTRY_VERIFY_WITH_TIMEOUT(service.events().startsWith(eventLine(
                                     0, "Failed to bind to port: 0. Version: Halvex Service v 5.0.5")),
                                 kPatienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(service.events().contains("Local server started."), kPatienceMs);
        QCOMPARE(service.stop(), 0);
    }

    void freeSpaceIsPolled()
    {
        ServiceFixture service;
        service.setKeyValue("FreeSpacePollInterval", 1);
        service.writeMachine(machine(30, 1234567890));
        QVERIFY2(service.serve(), service.output());
        QVERIFY(service.ask("ALLVOLINFO").contains("1234567890"));
        service.writeMachine(machine(30, 987654321));
        QTRY_VERIFY_WITH_TIMEOUT(service.ask("ALLVOLINFO").contains("987654321"), kPatienceMs);
        QCOMPARE(service.stop(), 0);
    }

    /// New intervals apply from the next start of the timers, and a change alone does not store them. A
    /// paused service does not poll.
    void pollIntervalsAndPause()
    {
        ServiceFixture service;
        service.setKeyValue("SMARTPollInterval", 360000);
        service.writeMachine(machine(30, 1000));
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask("SETTIME]![5]![360000000"), "SETTIME_OK,5,360000000");
        QCOMPARE(service.ask("RESET"), "RESET_OK");
        QTRY_VERIFY_WITH_TIMEOUT(temperatureLog(service).size() >= 5 * 8, kPatienceMs);

        QVERIFY(service.pause());
        const int paused = temperatureLog(service).size();
        service.writeMachine(machine(40, 1000));
        QVERIFY(service.resume());
        QTRY_VERIFY_WITH_TIMEOUT(temperatureLog(service).size() > paused, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(temperatureLog(service).right(1), QByteArray(1, 40 + 33), kPatienceMs);
        QCOMPARE(json(service.content("service-key.json"))["SMARTPollInterval"].toInt(), 360000);
        QCOMPARE(service.stop(), 0);
    }

    void intervalsBeyondTheTimers_data()
    {
        QTest::addColumn<QString>("interval");
        QTest::addColumn<int>("seconds"); // in the service key
        row("interval 0", "0", 0);
        row("negative interval", "-5000", 0);
        row("beyond 31 bits", "2147483648", 2147483);
        row("wraps around to 1 in 32 bits", "4294967297", 4294967);
    }

    /// The value is stored and reported as set, and the service polls once a second at most.
    void intervalsBeyondTheTimers()
    {
        QFETCH(QString, interval);
        ServiceFixture service;
        service.writeMachine(machine(30, 1000));
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask(QString("SET]![%1~;%2~;%2~;1~;0~;0~;~;~;~;~;0~;~;~;25~;55~;65~;~;")
                                 .arg(service.port())
                                 .arg(interval)),
                 QString("SET_OK"));
        const QString history = "GSTATD]![000101000000]![991231235959";
        const int before = service.ask(history).size();
        QElapsedTimer timer;
        timer.start();
        QCOMPARE(service.ask("RESET"), "RESET_OK");
        QVERIFY(service.waitUntilReady());
        for (int i = 0; i < 100; ++i)
            QCOMPARE(service.ask("DEVCOUNT"), "DEVCOUNT,1");
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        const int records = (service.ask(history).size() - before) / 8;
        QVERIFY2(records <= 2 + timer.elapsed() / 1000, qPrintable(QString::number(records)));
        QCOMPARE(service.firstLine().split("]![").mid(3, 2), QStringList({interval, interval}));
        QCOMPARE(service.stop(), 0);
        QTEST(json(service.content("service-key.json"))["SMARTPollInterval"].toInt(), "seconds");
    }

    void drivesAreCountedOnCommand()
    {
        ServiceFixture service;
        service.writeMachine(json(R"({"drives": [{"number": 0}]})"));
        QVERIFY2(service.serve(), service.output());
        QVERIFY(service.pause() && service.resume()); // the control socket is open
        service.writeMachine(json(R"({"drives": [{"number": 0}, {"number": 5}]})"));
        QProcess command;
        command.setProcessEnvironment(service.environment());
        command.start(service.process().program(), {"-command", "1"});
        QVERIFY(command.waitForFinished(kPatienceMs));
        QTRY_COMPARE_WITH_TIMEOUT(service.ask("DEVCOUNT"), "DEVCOUNT,2", kPatienceMs);
        QCOMPARE(service.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestLifecycle)
#include "tst_lifecycle.moc"
