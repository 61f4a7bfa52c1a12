// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/inventory.h"

#include "disk/fake_drives.h"
#include "platform/drive_requests.h"
#include "rows.h"

#include <QDir>

using namespace std::chrono_literals;
using Stall = StallingDrives::Stall;

namespace {

constexpr auto kAgeLong = 1h;
constexpr int kAttributeId = 4 + 2; // in a failure prediction: the data sector, slot 0
constexpr int kAttributeCurrent = kAttributeId + 3;

/// Returns a record with one attribute that is read by the predict-failure request.
DeviceRecord record(const QString &path)
{
    DeviceRecord device;
    device.path = path;
    device.accessMethod = AccessMethod::StorageDescriptor;
    device.smart.fullRead = FullRead::Attributes;
    device.smart.attributes.append(AttributeEntry());
    return device;
}

/// Two drives with one attribute each, of the values 12 and 99. A detection does not find them.
struct TwoDrives
{
    explicit TwoDrives(std::chrono::milliseconds limit = kAgeLong)
        : inventory(drives, {limit, limit, 0ms, kAgeLong})
    {
        drives.add(first, kAttributeCurrent, 12);
        drives.add(second, kAttributeCurrent, 99);
        inventory.smart.devices() = {record(first), record(second)};
    }

    ~TwoDrives()
    {
        drives.stallNoMore(); // lets readers end when a test has failed
        inventory.finish();
    }
    TwoDrives(const TwoDrives &) = delete;
    TwoDrives &operator=(const TwoDrives &) = delete;

    /// Returns the attribute's value; -1 if the latest read failed.
    [[nodiscard]] int valueOf(int device)
    {
        const DeviceRecord &record = inventory.smart.devices().at(device);
        return record.smart.lastRead == LastRead::Answered ? int(record.smart.attributes.at(0).current) : -1;
    }

    const QString first = "first";
    const QString second = "second";
    StallingDrives drives;
    Inventory inventory;
};

int entriesOf(const QString &directory)
{
    return QDir(directory).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size();
}

int s_warnings = 0;

void countWarnings(QtMsgType type, const QMessageLogContext & /*context*/, const QString & /*text*/)
{
    s_warnings += type == QtWarningMsg ? 1 : 0;
}

} // namespace

class TestAtaSmart : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pollSkips_data()
    {
        QTest::addColumn<int>("smartState");
        QTest::addColumn<int>("monitored");
        QTest::addColumn<bool>("force");
        QTest::addColumn<bool>("isRead");
        row("monitored drive", 1, 1, false, true);
        row("not monitored", 1, 0, false, false);
        row("not monitored, forced", 1, 0, true, true);
        row("no attributes", 0, 1, false, false);
        row("never read", -1, 1, false, true);
        row("never read, forced", -1, 1, true, false);
    }

    void pollSkips()
    {
        QFETCH(int, smartState);
        QFETCH(int, monitored);
        QFETCH(bool, force);
        TwoDrives machine;
        machine.inventory.smart.devices().removeLast();
        machine.inventory.smart.devices()[0].smart.fullRead = FullRead(smartState);
        machine.inventory.smart.devices()[0].monitored = monitored;
        machine.inventory.poll(force);
        QTEST(machine.drives.requests > 0, "isRead");
    }

    /// The other drives are read. The hung one keeps its values and gets no request until the pending one
    /// returns.
    void pollOfAHungDrive()
    {
        TwoDrives machine(500ms);
        machine.inventory.poll();
        machine.drives.stall(machine.first, Stall::UntilReleased);
        machine.drives.add(machine.second, kAttributeCurrent, 77);
        const QtMessageHandler handler = qInstallMessageHandler(countWarnings);
        for (int i = 0; i < 3; ++i)
            machine.inventory.poll();
        QCOMPARE(std::exchange(s_warnings, 0), 1);
        QCOMPARE(machine.valueOf(0), -1);
        QCOMPARE(machine.inventory.smart.devices().at(0).smart.attributes.at(0).current, 12U);
        QCOMPARE(machine.valueOf(1), 77);
        QCOMPARE(machine.drives.requests, 2 + 4);

        machine.drives.stall(machine.first, Stall::No);
        QTRY_VERIFY(!machine.inventory.workers.isBusy());
        for (int i = 0; i < 2; ++i)
            machine.inventory.poll();
        qInstallMessageHandler(handler);
        QCOMPARE(s_warnings, 1);
        QCOMPARE(machine.valueOf(0), 12);
    }

    void detectionDropsAPoll()
    {
        TwoDrives machine;
        machine.drives.stall(machine.first, Stall::UntilCancelled);
        bool isDone = false;
        machine.inventory.smart.readDrives(false, [&](const auto & /*readings*/) { isDone = true; });
        QVERIFY(machine.inventory.detect().isEmpty());
        QTRY_COMPARE(machine.drives.openDrives.load(), 0);
        QCoreApplication::processEvents();
        QVERIFY(!isDone);
    }

    /// A crowd of polls reads each drive twice at most at a time: now, and once more for all that come later.
    void pollsThatWaitShareARead()
    {
        TwoDrives machine;
        machine.drives.stall(machine.first, Stall::UntilReleased);
        int done = 0;
        for (int i = 0; i < 10; ++i)
            machine.inventory.smart.readDrives(false, [&](const auto & /*readings*/) { ++done; });
        QTRY_COMPARE(machine.drives.requests.load(), 3); // the second drive answers meanwhile
        machine.drives.stall(machine.first, Stall::No);
        runUntil([&] { return done == 10; });
        QCOMPARE(machine.drives.requests.load(), 4);
    }

    void detectionKeepsTheIdentityOfADriveThatHangs()
    {
        TwoDrives machine(500ms);
        DeviceRecord known = record(physicalDrivePath(7));
        known.probeNumber = 7;
        known.serial = "SERIAL";
        machine.inventory.smart.devices() = {known};
        machine.drives.add(known.path, 0, 0);
        machine.drives.stall(known.path, Stall::UntilReleased);
        machine.inventory.poll();
        const DeviceList &devices = machine.inventory.detect();
        QCOMPARE(devices.size(), 1);
        QCOMPARE(devices.at(0).serial, "SERIAL");
        QCOMPARE(devices.at(0).smart.fullRead, FullRead::Never);
    }

    void noResourceLeaksAfterManyHangs()
    {
        const QString threads = "/proc/self/task";
        const QString descriptors = "/proc/self/fd";
        TwoDrives machine(1ms);
        machine.inventory.smart.devices().removeLast();
        machine.inventory.poll();
        const int threadsBefore = entriesOf(threads);
        [[maybe_unused]] const int descriptorsBefore = entriesOf(descriptors);
        for (int cycle = 0; cycle < 1000; ++cycle) {
            const bool isCancellable = cycle % 2 == 0;
            machine.drives.stall(machine.first, isCancellable ? Stall::UntilCancelled : Stall::UntilReleased);
            machine.inventory.poll();
            QCOMPARE(machine.valueOf(0), -1);
            machine.drives.stall(machine.first, Stall::No);
            machine.inventory.finish();
        }
        QCOMPARE(machine.drives.openDrives.load(), 0);
        QTRY_VERIFY(entriesOf(threads) <= threadsBefore);
#ifndef Q_OS_WIN // Wine keeps descriptors of its own
        QVERIFY(entriesOf(descriptors) <= descriptorsBefore);
#endif
    }
};

QTEST_GUILESS_MAIN(TestAtaSmart)
#include "tst_ata_smart.moc"
