// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
// The tables are made of texts: let them be plain literals.
#undef QT_NO_CAST_FROM_ASCII

#include "disk/inventory.h"

#include "disk/fake_drives.h"
#include "disk/simulated_machine.h"
#include "platform/drive_requests.h"
#include "rows.h"

#include <QDeadlineTimer>
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

/// Returns a simulated drive with further keys.
QJsonObject simulated(int number, const QByteArray &keys = "{}")
{
    QJsonObject drive =
        QJsonDocument::fromJson(R"({"model": "MODEL", "serial": "SERIAL", "capacity": 1000204886016,
        "smart": {"attributes": [{"id": 5, "current": 80, "threshold": 20}]}})")
            .object();
    drive["number"] = number;
    const QJsonObject more = QJsonDocument::fromJson(keys).object();
    for (auto key = more.begin(); key != more.end(); ++key)
        drive[key.key()] = key.value();
    return drive;
}

QStringList pathsOf(const DeviceList &devices)
{
    QStringList paths;
    for (const DeviceRecord &device : devices)
        paths << device.path.right(1);
    return paths;
}

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
        row("monitored", 1, 1, false, true);
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

    /// Whatever request a drive hangs in, the other drives are listed in order. The values read before count,
    /// and the rest is read when the drive answers.
    void detectionOfHungDrives()
    {
        const SimulatedMachine machine({simulated(0), simulated(1, R"({"hangs": ["open"]})"),
                                        simulated(2, R"({"hangs": ["geometry"]})"),
                                        simulated(3, R"({"hangs": ["identify"]})"),
                                        simulated(4, R"({"hangs": ["smart"]})"), simulated(5)});
        Inventory inventory(machine.drives(), {3s, kAgeLong, 0ms, 1s});
        DeviceList devices = inventory.detect();
        QCOMPARE(pathsOf(devices), QStringList({"0", "3", "4", "5"}));
        QCOMPARE(devices.at(1).model, "MODEL"); // by the system's descriptor
        QCOMPARE(int(devices.at(1).accessMethod), -1);
        QCOMPARE(devices.at(1).smart.fullRead, FullRead::Never);
        QCOMPARE(devices.at(2).smart.fullRead, FullRead::Never);
        QCOMPARE(devices.at(3).smart.fullRead, FullRead::Attributes);

        machine.change({simulated(0), simulated(1), simulated(2), simulated(3), simulated(4), simulated(5)});
        for (const int number : {2, 3, 4}) // their requests were cancelled
            runUntil([&] { return !inventory.workers.isHung(physicalDrivePath(number)); });
        devices = inventory.poll();
        for (const DeviceRecord &device : devices) {
            QCOMPARE(int(device.accessMethod), 0);
            QCOMPARE(device.smart.attributes.value(0).threshold, 20U);
        }
        devices = inventory.detect(); // the drive whose open() never returns gets no second open()
        QCOMPARE(pathsOf(devices), QStringList({"0", "2", "3", "4", "5"}));
    }

    /// A drive that is read by its place in the list waits for the others; it is read later if they hang.
    void detectionEndsWithinOneLimit_data()
    {
        QTest::addColumn<QByteArray>("first"); // keys of the first of two drives
        QTest::addColumn<bool>("isUnread");    // the second
        row("both answer", QByteArray("{}"), false);
        row("one hangs", QByteArray(R"({"hangs": ["geometry"]})"), true);
    }

    void detectionEndsWithinOneLimit()
    {
        QFETCH(QByteArray, first);
        const SimulatedMachine machine(
            {simulated(0, first),
             simulated(1, R"({"answers": ["geometry", "partition", "deviceNumber", "smart"]})")});
        Inventory inventory(machine.drives(), {3s, kAgeLong, 0ms, 1s});
        const QDeadlineTimer twoLimits(2 * 3000);
        inventory.detect();
        QTEST(inventory.smart.hasUnreadDrives(), "isUnread");
        QVERIFY(!twoLimits.hasExpired());
        inventory.poll();
        QCOMPARE(inventory.smart.devices().last().smart.attributes.value(0).threshold, 20U);
        inventory.finish();
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

    void thresholdsThatFailCountAsZero()
    {
        const SimulatedMachine machine({simulated(0)});
        // Fails the second of the two S.M.A.R.T. requests.
        struct NoThresholds : DriveSystem
        {
            DriveSystem &drives;
            std::unique_ptr<Drive> real;

            explicit NoThresholds(DriveSystem &system)
                : drives(system)
            {}
            OpenReply open(const QString &path) override
            {
                OpenReply reply = drives.open(path);
                if (!reply.drive)
                    return reply;
                real = std::move(reply.drive);
                const auto answer = [this](quint32 code, ByteView in, MutableBytes out) {
                    const bool isThresholds = in.u8(32) == ata::kSmartReadThresholds;
                    return isThresholds ? ControlReply{system_error::kIoDevice, 0}
                                        : real->control(code, in, out);
                };
                return {std::make_unique<ScriptedDrive>(answer), system_error::kNone};
            }
        } drives(machine.drives());
        Inventory inventory(drives);
        const DeviceRecord device = inventory.detect().value(0);
        QCOMPARE(device.smart.fullRead, FullRead::Attributes);
        QCOMPARE(device.smart.attributes.value(0).threshold, 0U);
    }

    void pollLeavesASleepingDriveAsleep()
    {
        const QByteArray keys = R"({"sleeping": true, "smart": {"attributes": [{"id": 5, "current": 70}]}})";
        const SimulatedMachine machine({simulated(0)});
        for (const bool leavesAsleep : {true, false}) {
            machine.change({simulated(0)});
            Inventory inventory(machine.drives(), {}, leavesAsleep);
            inventory.detect();
            machine.change({simulated(0, keys)});
            const DeviceRecord device = inventory.poll().at(0);
            QCOMPARE(device.smart.lastRead == LastRead::Asleep, leavesAsleep);
            QCOMPARE(device.smart.attributes.at(0).current, leavesAsleep ? 80U : 70U);
        }
    }

    void countSeesSwappedDrives_data()
    {
        QTest::addColumn<QByteArray>("keys"); // of the second drive, at the count
        QTest::addColumn<bool>("changed");
        const auto keys = [](const char *text) { return QByteArray(text); };
        row("same drives", keys("{}"), false);
        row("another serial number", keys(R"({"serial": "OTHER"})"), true);
        row("another model", keys(R"({"model": "OTHER"})"), true);
        row("another size", keys(R"({"capacity": 5000000000})"), true);
        row("swapped by one that hangs in IDENTIFY", keys(R"({"serial": "OTHER", "hangs": ["identify"]})"),
            true);
        row("hangs in its geometry", keys(R"({"hangs": ["geometry"]})"), false);
        row("no longer answers IDENTIFY",
            keys(R"({"answers": ["geometry", "partition", "deviceNumber", "descriptor"]})"), false);
        row("drive removed", keys(R"({"openError": 2})"), true);
    }

    void countSeesSwappedDrives()
    {
        QFETCH(QByteArray, keys);
        const SimulatedMachine machine({simulated(0), simulated(1)});
        Inventory inventory(machine.drives(), {3s, kAgeLong, 0ms, kAgeLong});
        QCOMPARE(inventory.detect().size(), 2);
        machine.change({simulated(0), simulated(1, keys)});
        QTEST(inventory.count().changed, "changed");
        inventory.finish();
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
