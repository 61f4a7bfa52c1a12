// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"
#include "process/short_limits.h"
#include "rows.h"

#include <QElapsedTimer>
#include <QTest>

#include <memory>
#include <vector>

namespace {

constexpr int kDrives = 99;

/// Each kind of hang for all drives, then one drive of each kind in turn.
const QStringList kKinds{"open", "geometry", "identify", "smart", "read"};

/// Returns 99 drives, of which the first `hung` never answer.
QJsonObject machine(int hung)
{
    QJsonArray drives;
    for (int i = 0; i < kDrives; ++i) {
        QJsonObject drive{{"number", i}, {"dump", "drives/st500nm0011.json"}};
        if (i < hung)
            drive["hangs"] = QJsonArray{kKinds.at(i % kKinds.size())};
        drives.append(drive);
    }
    return {{"drives", drives}};
}

/// Returns drives that answer a detection and then hang in everything but open().
QJsonObject machineThatStopsAnswering(int hung)
{
    QJsonObject changed = machine(0);
    QJsonArray drives = changed["drives"].toArray();
    for (int i = 0; i < hung; ++i) {
        QJsonObject drive = drives.at(i).toObject();
        drive["hangs"] = QJsonArray{"geometry", "identify", "smart", "read"};
        drives[i] = drive;
    }
    changed["drives"] = drives;
    return changed;
}

} // namespace

/// Drives that hang, with short limits in place of the product's.
class TestHungDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void operations_data()
    {
        QTest::addColumn<int>("hung");
        row("1 of 99", 1);
        row("12 of 99", 12);
    }

    void startAndStop_data() { operations_data(); }

    /// A detection ends after one limit, does not delay other consoles, and can be interrupted at any time.
    void startAndStop()
    {
        QFETCH(int, hung);
        ServiceFixture service;
        service.setProgram(HALVEX_SHORT_LIMITS_PROGRAM);
        service.writeMachine(machine(hung));
        QVERIFY2(service.start(), service.output());
        QCOMPARE(service.firstLine(), "DETECTING");
        QCOMPARE(service.stop(), 0);

        QElapsedTimer timer;
        QVERIFY2(service.start(), service.output());
        timer.start();
        QCOMPARE(service.firstLine(), "DETECTING");
        QVERIFY(service.waitUntilReady());
        QVERIFY(timer.elapsed() < 2 * kShortRequestLimit.count());
        const int left = kDrives - (hung + 4) / 5 - (hung + 3) / 5; // not in open() or geometry
        QCOMPARE(service.ask("DEVCOUNT"), QString("DEVCOUNT,%1").arg(left));
        QCOMPARE(service.stop(), 0);
    }

    void operations()
    {
        QFETCH(int, hung);
        ServiceFixture service;
        service.setProgram(HALVEX_SHORT_LIMITS_PROGRAM);
        service.setKeyValue("SMARTPollInterval", 1);
        service.writeMachine(machine(0));
        QVERIFY2(service.serve(), service.output());
        service.writeMachine(machineThatStopsAnswering(hung));

        RawConsole busy(service.port());
        QVERIFY(!busy.readLine().isNull());
        QElapsedTimer timer;
        timer.start();
        busy.send("REFRESH");
        for (int i = 0; i < hung; ++i)
            service.ask(QString("STARTSCAN]![%1]![65536]![0]![1000").arg(i));
        QCOMPARE(service.ask("DEVCOUNT"), "DEVCOUNT,99");
        QVERIFY(service.ask("GSTATSCAN").startsWith("STATSCAN]![0;1;0;0;0;"));
        QCOMPARE(busy.socket().bytesAvailable(), 0); // REFRESH is answered after its work
        QCOMPARE(busy.readLine(), "REFRESH_OK");
        QVERIFY(timer.elapsed() < 2 * kShortRequestLimit.count());

        for (int i = 0; i < hung; ++i)
            QCOMPARE(service.ask(QString("STOPSCAN]![%1").arg(i)), QString("STOPEDSCAN]![%1").arg(i));
        const auto scansRunning = [&service] { return service.ask("GSTATSCAN").contains(";1;0;0;0;"); };
        QTRY_VERIFY_WITH_TIMEOUT(!scansRunning(), kPatienceMs);

        busy.send("REFRESH");
        QVERIFY(service.command(1));
        QCOMPARE(service.ask("DEVCOUNT"), "DEVCOUNT,99"); // counting, too, waits for no drive
        timer.start();
        QCOMPARE(service.ask("RESET"), "RESET_OK");
        QVERIFY(service.waitUntilReady());
        QVERIFY(timer.elapsed() < 2 * kShortRequestLimit.count());
        QCOMPARE(service.stop(), 0);
    }

    /// Consoles do not wait for each other's reads of a drive that is slow, but answers in time.
    void refreshOfACrowd()
    {
        ServiceFixture service;
        service.setProgram(HALVEX_SHORT_LIMITS_PROGRAM);
        service.writeMachine(machine(0));
        QVERIFY2(service.serve(), service.output());
        QJsonObject slow{{"number", 0}, {"dump", "drives/st500nm0011.json"}};
        slow["smartDelayMs"] = int(kShortRequestLimit.count()) * 2 / 3;
        service.writeMachine({{"drives", QJsonArray{slow}}});

        std::vector<std::unique_ptr<RawConsole>> crowd;
        for (int i = 0; i < 20; ++i) {
            crowd.push_back(std::make_unique<RawConsole>(service.port()));
            QVERIFY(!crowd.back()->readLine().isNull());
        }
        QElapsedTimer timer;
        timer.start();
        for (const auto &console : crowd)
            console->send("REFRESH");
        for (const auto &console : crowd)
            QCOMPARE(console->readLine(), "REFRESH_OK");
        QVERIFY(timer.elapsed() < 2 * kShortRequestLimit.count());
        QCOMPARE(service.stop(), 0);
    }
};

QTEST_GUILESS_MAIN(TestHungDrives)
#include "tst_hung_drives.moc"
