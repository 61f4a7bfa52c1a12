// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/inventory.h"

#include "disk/fake_drives.h"
#include "disk/simulated_machine.h"
#include "platform/drive_requests.h"
#include "rows.h"

#include <QDeadlineTimer>

using namespace std::chrono_literals;

namespace {

constexpr auto kAgeLong = 1h;

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

} // namespace

/// Detections, counts and polls of a simulated machine whose drives hang, fail or change.
class TestInventory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
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
        row("one drive hangs", QByteArray(R"({"hangs": ["geometry"]})"), true);
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
        row("another serial number, without a descriptor",
            keys(R"({"serial": "OTHER", "answers": ["geometry", "partition", "deviceNumber", "ata"]})"),
            true);
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
};

QTEST_GUILESS_MAIN(TestInventory)
#include "tst_inventory.moc"
