// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/ata_smart.h"

#include "disk/fake_drives.h"
#include "rows.h"

#include <QSignalSpy>
#include <QtTest>

using namespace std::chrono_literals;
using Stall = StallingDrives::Stall;

namespace {

constexpr auto kAgeLong = 1h;
constexpr int kAttributeId = 4 + 2; // in a failure prediction: the data sector, slot 0
constexpr int kAttributeCurrent = kAttributeId + 3;

/// A record that is read by the predict-failure request.
DeviceRecord record(const QString &path)
{
    DeviceRecord device;
    device.path = path;
    device.accessMethod = AccessMethod::StorageDescriptor;
    return device;
}

/// An inventory of two drives whose only attributes are 12 and 199. A detection finds neither.
struct TwoDrives
{
    TwoDrives()
    {
        drives.add(first, kAttributeId, 12);
        drives.add(second, kAttributeId, char(199));
        smart.devices() = {record(first), record(second)};
        smart.setTimeLimits(kAgeLong, kAgeLong);
    }

    ~TwoDrives() { drives.stallNoMore(); } // a test that fails must not wait for its readers for ever
    TwoDrives(const TwoDrives &) = delete;
    TwoDrives &operator=(const TwoDrives &) = delete;

    /// Waits, without running the event loop, until both drives have been asked and `count` of them closed.
    void waitUntilRead(int count)
    {
        while (drives.requests < 2 || drives.openDrives > 2 - count)
            QThread::yieldCurrentThread();
    }

    [[nodiscard]] quint32 attributeOf(int device)
    {
        return smart.devices().at(device).attributes.value(0).id;
    }

    const QString first = QStringLiteral("first");
    const QString second = QStringLiteral("second");
    StallingDrives drives;
    ATA_Smart smart{drives};
    QSignalSpy finished{&smart, &ATA_Smart::finishedScanSMART};
};

} // namespace

class TestAtaSmart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void noDrives()
    {
        TwoDrives machine;
        machine.smart.devices().clear();
        machine.smart.startReaders();
        machine.smart.startReaders();
        QCOMPARE(machine.finished.count(), 0);
        QVERIFY(machine.finished.wait());
        QCoreApplication::processEvents();
        QCOMPARE(machine.finished.count(), 1);
    }

    void readsEveryDrive()
    {
        TwoDrives machine;
        machine.smart.devices().insert(1, record(QStringLiteral("missing")));
        machine.smart.startReaders();
        QVERIFY(machine.finished.wait());
        QCOMPARE(machine.attributeOf(0), 12U);
        QCOMPARE(machine.attributeOf(2), 199U);
        QCOMPARE(machine.smart.devices().at(1).smartState, -1);
    }

    void readerThatIsGivenUpIsCountedOnce()
    {
        TwoDrives machine;
        machine.drives.stall(machine.second, Stall::UntilCancelled);
        machine.smart.startReaders();
        // The first is read meanwhile, but the event loop must not hear of it before the watchdog's verdict.
        machine.waitUntilRead(1);
        machine.smart.terminate_S_thread(0);
        machine.smart.terminate_S_thread(0);
        QCoreApplication::processEvents();
        machine.smart.finishedReadSMART(0);
        QCOMPARE(machine.finished.count(), 0);
        QCOMPARE(machine.smart.devices().at(0).smartState, -1);

        machine.smart.terminate_S_thread(1); // cuts its request off
        QCOMPARE(machine.finished.count(), 1);
        QTRY_COMPARE(machine.drives.openDrives, 0);
    }

    void restartDropsTheReadersBefore()
    {
        TwoDrives machine;
        machine.smart.startReaders();
        machine.waitUntilRead(2);

        machine.drives.stall(machine.first, Stall::UntilCancelled);
        machine.smart.startReaders();
        QCoreApplication::processEvents(); // the first readers' signals
        QCOMPARE(machine.finished.count(), 0);
        while (machine.drives.requests < 4)
            QThread::yieldCurrentThread();
        machine.smart.detectDevices();
        QCOMPARE(machine.drives.openDrives, 0);
        QVERIFY(machine.smart.devices().isEmpty());
    }

    void restartWhileAnOldReaderHangs()
    {
        TwoDrives machine;
        machine.smart.setTimeLimits(30ms, 0ms);
        machine.drives.stall(machine.first, Stall::UntilReleased);
        machine.smart.startReaders();
        QVERIFY(machine.finished.wait());

        machine.smart.setTimeLimits(kAgeLong, 0ms);
        machine.smart.devices() = {record(machine.second)};
        machine.smart.startReaders();
        QVERIFY(machine.smart.leftThreadsBehind());
        QVERIFY(machine.finished.wait());
        QCOMPARE(machine.attributeOf(0), 199U);

        machine.drives.stall(machine.first, Stall::No);
        QTRY_VERIFY(!machine.smart.leftThreadsBehind());
        QCoreApplication::processEvents();
        QCOMPARE(machine.finished.count(), 2);
        QCOMPARE(machine.smart.devices().at(0).attributes.size(), 1);
    }

    void synchronousReadSkips_data()
    {
        QTest::addColumn<int>("smartState");
        QTest::addColumn<int>("monitored");
        QTest::addColumn<bool>("force");
        QTest::addColumn<bool>("isRead");
        row("monitored", 1, 1, false, true);
        row("not monitored", 1, 0, false, false);
        row("not monitored, forced", 1, 0, true, true);
        row("no attributes, forced", 0, 1, true, false);
    }

    void synchronousReadSkips()
    {
        QFETCH(int, smartState);
        QFETCH(int, monitored);
        QFETCH(bool, force);
        TwoDrives machine;
        machine.smart.devices()[0].smartState = smartState;
        machine.smart.devices()[0].monitored = monitored;
        machine.smart.readSynchronously(force);
        QTEST(machine.drives.requests == 1, "isRead");
    }

    void synchronousReadSurvivesAHungDrive()
    {
        TwoDrives machine;
        machine.smart.startReaders();
        QVERIFY(machine.finished.wait());
        machine.smart.setTimeLimits(500ms, 0ms);
        machine.drives.add(machine.second, kAttributeCurrent, 77);
        machine.drives.stall(machine.first, Stall::UntilReleased);
        machine.smart.readSynchronously(false);
        QCOMPARE(machine.smart.devices().at(1).attributes.at(0).current, 77U);
        QVERIFY(machine.smart.leftThreadsBehind());

        // A drive that still hangs is not asked again.
        const int requests = machine.drives.requests;
        machine.smart.readSynchronously(false);
        QCOMPARE(machine.drives.requests, requests + 1);

        machine.drives.stall(machine.first, Stall::No);
        QTRY_VERIFY(!machine.smart.leftThreadsBehind());
        machine.smart.readSynchronously(false);
        QCOMPARE(machine.drives.requests, requests + 3);
    }

    /// Each poll would hold the service up for the whole limit otherwise.
    void driveGivenUpOnceIsNotWaitedForAsLong()
    {
        TwoDrives machine;
        machine.smart.startReaders();
        QVERIFY(machine.finished.wait());
        machine.drives.stall(machine.first, Stall::UntilCancelled);
        for (const auto limit : {std::chrono::milliseconds(30), std::chrono::milliseconds(kAgeLong)}) {
            machine.smart.setTimeLimits(limit, kAgeLong);
            machine.smart.readSynchronously(false);
        }
        machine.drives.stall(machine.first, Stall::No);
        machine.drives.add(machine.first, kAttributeCurrent, 77);
        machine.smart.readSynchronously(false);
        QCOMPARE(machine.smart.devices().at(0).attributes.at(0).current, 77U);
    }
};

QTEST_GUILESS_MAIN(TestAtaSmart)
#include "tst_ata_smart.moc"
