// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include <QTest>
#include <QTime>

namespace {

/// Returns the scan state of drive `n`: index, state, percent, first, current, time and any bad ranges.
QStringList scanState(ServiceFixture &service, int n = 0)
{
    return service.ask("GSTATSCAN").section("]![", 1).section('|', n, n).split(';');
}

const QString kRunning = "1";
const QString kIdle = "0";

} // namespace

/// Scans of the built service, as a console sees them.
class TestScans : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// A result is on the disk when the scan has ended, by itself or by a console.
    void resultOutlivesAKill()
    {
        ServiceFixture service;
        service.writeMachine(json(R"({"drives": [
            {"number": 0, "capacity": 153600, "badSectors": [[130, 131], [299, 299]]},
            {"number": 1, "capacity": 1024000000, "readDelayMs": 20, "badSectors": [[5, 5]]}]})"));
        QVERIFY2(service.serve(), service.output());
        service.ask("STARTSCAN]![0]![65536]![0]![299");
        service.ask("STARTSCAN]![1]![65536]![0]![1999999");
        QTRY_VERIFY_WITH_TIMEOUT(!scanState(service, 1).value(6).isEmpty(), kPatienceMs);
        QCOMPARE(service.ask("STOPSCAN]![1"), "STOPEDSCAN]![1");
        for (const int drive : {0, 1})
            QTRY_COMPARE_WITH_TIMEOUT(scanState(service, drive).value(1), kIdle, kPatienceMs);
        QCOMPARE(scanState(service, 0).value(6), "128-255,256-299");
        const QString states = service.ask("GSTATSCAN");
        service.process().kill();
        QVERIFY(service.process().waitForFinished(kPatienceMs));
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.ask("GSTATSCAN"), states);
        QCOMPARE(service.stop(), 0);
    }

    /// A read that does not return delays neither the other drive nor a new detection nor the end of the
    /// service.
    void hungReadDelaysNothing()
    {
        ServiceFixture service;
        service.writeMachine(json(R"({"drives": [{"number": 0, "capacity": 153600, "readDelayMs": 3600000},
                                                 {"number": 1, "capacity": 1024000000, "readDelayMs": 20}]})"));
        QVERIFY2(service.serve(), service.output());
        service.ask("STARTSCAN]![0]![65536]![0]![299");
        service.ask("STARTSCAN]![1]![65536]![5]![1999999");
        QTRY_VERIFY_WITH_TIMEOUT(scanState(service, 1).value(4).toInt() > 5, kPatienceMs);
        QCOMPARE(service.ask("STOPSCAN]![1"), "STOPEDSCAN]![1");
        QTRY_COMPARE_WITH_TIMEOUT(scanState(service, 1).value(1), kIdle, kPatienceMs);
        QCOMPARE(scanState(service, 0).value(1), kRunning);
        QCOMPARE((scanState(service, 1).value(4).toInt() - 5 + 1) % 128, 0); // a whole block

        QCOMPARE(service.ask("RESET"), "RESET_OK");
        QVERIFY(service.waitUntilReady());
        service.ask("STARTSCAN]![0]![65536]![0]![299");
        QTRY_COMPARE_WITH_TIMEOUT(scanState(service).value(1), kRunning, kPatienceMs);
        QCOMPARE(service.stop(), 0);
    }

    void scheduleStartsAScan()
    {
        ServiceFixture service;
        service.writeMachine(
            json(R"({"drives": [{"number": 0, "capacity": 153600, "readDelayMs": 3600000}]})"));
        QVERIFY2(service.serve(), service.output());
        const QTime now = QTime::currentTime();
        if (now > QTime(23, 58))
            QSKIP("the minute before midnight belongs to tomorrow's schedule");
        const QString time = now.addSecs(50).toString("hhmmss");
        QCOMPARE(service.ask(QString("SETSCANSCHED]![0~;2~;0~;260101%1~;x").arg(time)),
                 QString("SCANSCHED]![0~;2~;0~;260101~;%1").arg(time));
        QCOMPARE(scanState(service).value(1), kIdle);
        QTRY_COMPARE_WITH_TIMEOUT(scanState(service).value(1), kRunning, kPatienceMs);
        QCOMPARE(service.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestScans)
#include "tst_scans.moc"
