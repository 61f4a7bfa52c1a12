// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"
#include "rows.h"

#include <QTest>
#include <QTime>

namespace {

constexpr int kScanPatienceMs = 60000;

/// A drive of `sectors` sectors of 512 bytes.
QJsonObject smallDrive(int number, int sectors)
{
    return {{QStringLiteral("number"), number},
            {QStringLiteral("model"), QStringLiteral("SMALL DRIVE")},
            {QStringLiteral("capacity"), sectors * 512}};
}

QJsonObject machineOf(const QJsonArray &drives)
{
    return {{QStringLiteral("drives"), drives}};
}

/// A drive that needs an hour for each read.
QJsonObject slowDrive()
{
    QJsonObject drive = smallDrive(0, 300);
    drive.insert(QStringLiteral("readDelayMs"), 3600 * 1000);
    return drive;
}

/// The scan state of the only drive: index, state, percent, first, current, time and, if any, bad ranges.
QStringList scanState(RawConsole &console)
{
    return console.ask(QStringLiteral("GSTATSCAN")).section(QStringLiteral("]!["), 1).split(QLatin1Char(';'));
}

const QString kRunning = QStringLiteral("1");
const QString kIdle = QStringLiteral("0");

} // namespace

/// Scans of the built service, as a console sees them.
class TestScans : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void badSectorsAreFoundAndKept()
    {
        QJsonObject drive = smallDrive(0, 300);
        drive.insert(QStringLiteral("badSectors"), QJsonArray{QJsonArray{130, 131}, QJsonArray{299, 299}});
        ServiceFixture service;
        service.writeMachine(machineOf({drive}));
        QVERIFY2(service.serve(), service.output());
        {
            RawConsole console(service.port());
            QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
            QCOMPARE(console.ask(QStringLiteral("STARTSCAN]![0]![65536]![0]![299")),
                     QStringLiteral("STARTEDSCAN]![0"));
            QTRY_COMPARE_WITH_TIMEOUT(scanState(console).value(1), kIdle, kScanPatienceMs);
            const QStringList state = scanState(console);
            QCOMPARE(state.mid(0, 5), QStringList({QStringLiteral("0"), kIdle, QStringLiteral("100"),
                                                   QStringLiteral("0"), QStringLiteral("299")}));
            QCOMPARE(state.value(6), QStringLiteral("128-255,256-299"));
        }
        QCOMPARE(service.stop(), 0);

        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        const QStringList state = scanState(console);
        QCOMPARE(state.value(2), QStringLiteral("100"));
        QCOMPARE(state.value(4), QStringLiteral("299"));
        QCOMPARE(state.value(6), QStringLiteral("128-255,256-299"));
        QCOMPARE(service.stop(), 0);
    }

    void refusedScansChangeNothing()
    {
        ServiceFixture service;
        service.writeMachine(machineOf({smallDrive(0, 300)}));
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        const QStringList before = scanState(console);
        QCOMPARE(console.ask(QStringLiteral("STARTSCAN]![0]![65536]![10]![9")),
                 QStringLiteral("STARTEDSCAN]![0"));
        QCOMPARE(console.ask(QStringLiteral("STARTSCAN]![0]![511]![0]![9")),
                 QStringLiteral("STARTEDSCAN]![0"));
        QCOMPARE(console.ask(QStringLiteral("STARTSCAN]![0]![67109376]![0]![9")),
                 QStringLiteral("STARTEDSCAN]![0"));
        QCOMPARE(scanState(console), before);
        QCOMPARE(service.stop(), 0);
    }

    void stopEndsAScan()
    {
        constexpr int kSectors = 2000000;
        QJsonObject drive = smallDrive(0, kSectors);
        drive.insert(QStringLiteral("readDelayMs"), 20);
        ServiceFixture service;
        service.writeMachine(machineOf({drive}));
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        QCOMPARE(console.ask(QStringLiteral("STARTSCAN]![0]![65536]![5]![%1").arg(kSectors - 1)),
                 QStringLiteral("STARTEDSCAN]![0"));
        QTRY_VERIFY_WITH_TIMEOUT(scanState(console).value(4).toInt() > 5, kScanPatienceMs);
        QCOMPARE(scanState(console).value(1), kRunning);
        QCOMPARE(console.ask(QStringLiteral("STOPSCAN]![0")), QStringLiteral("STOPEDSCAN]![0"));
        QTRY_COMPARE_WITH_TIMEOUT(scanState(console).value(1), kIdle, kScanPatienceMs);
        const QStringList state = scanState(console);
        QCOMPARE((state.value(4).toInt() - 5 + 1) % 128, 0); // the block in hand was finished
        QCOMPARE(state.size(), 6);                           // and nothing is bad
        QCOMPARE(service.stop(), 0);
    }

    /// What cannot be read any more is bad, and the scan goes on to its end.
    void vanishingDrive()
    {
        constexpr int kSectors = 20000;
        QJsonObject drive = smallDrive(0, kSectors);
        drive.insert(QStringLiteral("readDelayMs"), 20);
        ServiceFixture service;
        service.writeMachine(machineOf({drive}));
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        QCOMPARE(console.ask(QStringLiteral("STARTSCAN]![0]![65536]![0]![%1").arg(kSectors - 1)),
                 QStringLiteral("STARTEDSCAN]![0"));
        QTRY_VERIFY_WITH_TIMEOUT(scanState(console).value(4).toInt() > 0, kScanPatienceMs);
        service.writeMachine(machineOf({}));
        QTRY_COMPARE_WITH_TIMEOUT(scanState(console).value(1), kIdle, kScanPatienceMs);
        const QStringList state = scanState(console);
        QCOMPARE(state.value(2), QStringLiteral("100"));
        QVERIFY2(state.value(6).endsWith(QStringLiteral("-%1").arg(kSectors - 1)),
                 qPrintable(state.value(6)));
        QCOMPARE(service.stop(), 0);
    }

    void hungReadHoldsNothingUp_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("reply");
        row("detection anew", "RESET", "RESET_OK");
        row("shutdown", "DEVCOUNT", "DEVCOUNT,1");
    }

    /// Neither a new detection nor the end of the service waits for a read that does not come back.
    void hungReadHoldsNothingUp()
    {
        QFETCH(QString, command);
        QFETCH(QString, reply);
        ServiceFixture service;
        service.writeMachine(machineOf({slowDrive()}));
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        QCOMPARE(console.ask(QStringLiteral("STARTSCAN]![0]![65536]![0]![299")),
                 QStringLiteral("STARTEDSCAN]![0"));
        QTRY_COMPARE_WITH_TIMEOUT(scanState(console).value(1), kRunning, kScanPatienceMs);
        QCOMPARE(console.ask(command), reply);
        QVERIFY(service.waitUntilReady());
        QCOMPARE(service.stop(), 0);
    }

    void scheduleStartsAScan()
    {
        ServiceFixture service;
        service.writeMachine(machineOf({slowDrive()}));
        QVERIFY2(service.serve(), service.output());
        RawConsole console(service.port());
        QVERIFY(console.readLine().startsWith(QLatin1String("VER]![")));
        const QTime now = QTime::currentTime();
        if (now > QTime(23, 58))
            QSKIP("the minute before midnight belongs to tomorrow's schedule");
        const QString time = now.addSecs(50).toString(QStringLiteral("hhmmss"));
        QCOMPARE(console.ask(QStringLiteral("SETSCANSCHED]![0~;2~;0~;260101%1~;x").arg(time)),
                 QStringLiteral("SCANSCHED]![0~;2~;0~;260101~;%1").arg(time));
        QCOMPARE(scanState(console).value(1), kIdle);
        QTRY_COMPARE_WITH_TIMEOUT(scanState(console).value(1), kRunning, kScanPatienceMs);
        QCOMPARE(service.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestScans)

#include "tst_scans.moc"
