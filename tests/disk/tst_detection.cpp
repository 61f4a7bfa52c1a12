// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/detection.h"

#include "disk/fake_drives.h"
#include "disk/inventory.h"
#include "disk/simulated_machine.h"
#include "platform/drive_requests.h"
#include "rows.h"

#include <QtTest>

namespace {

/// Returns a drive whose IDENTIFY data and system descriptor differ, with `text` as its further keys.
QJsonObject drive(int number, const QByteArray &text = "{}")
{
    const char kBase[] =
        R"({"model": "MODEL", "serial": "SERIAL", "firmware": "FW", "capacity": 1000204886016,
        "ataMajor": 1020, "ataMinor": 41, "smart": {"enabled": true, "attributes": []},
        "descriptor": {"vendor": "ATA", "product": "PRODUCT", "revision": "REV", "serial": "  SER"}})";
    QJsonObject object = QJsonDocument::fromJson(kBase).object();
    object["number"] = number;
    const QJsonObject more = QJsonDocument::fromJson(text).object();
    for (auto it = more.begin(); it != more.end(); ++it)
        object[it.key()] = it.value();
    return object;
}

/// Returns whether a fixed disk can be listed if every answer lacks this many bytes.
bool canBeListed(quint32 missing)
{
    ScriptedDrive disk([missing](quint32 code, ByteView, MutableBytes output) -> ControlReply {
        if (code == drive_request::kDriveGeometry)
            output.setU8(drive_request::geometry::kMediaType, drive_request::geometry::kFixedMedia);
        return {system_error::kNone, quint32(output.size()) - missing};
    });
    DetectedDrive device;
    return bool(detection::readBasics(disk, device)) && detection::isFixedDisk(device);
}

} // namespace

class TestDetection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void selectsDrives_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<int>("detected");
        QTest::addColumn<int>("counted");
        row("complete answers", 0, QByteArray(R"({"answers": ["geometry", "partition", "deviceNumber"]})"), 1,
            1);
        row("no geometry", 0, QByteArray(R"({"answers": ["partition", "deviceNumber", "ata"]})"), 0, 0);
        row("no partition", 0, QByteArray(R"({"answers": ["geometry", "deviceNumber", "ata"]})"), 0, 1);
        row("no device number", 0, QByteArray(R"({"answers": ["geometry", "partition", "ata"]})"), 0, 1);
        row("removable medium", 0, QByteArray(R"({"mediaType": 11})"), 0, 0);
        row("does not open", 0, QByteArray(R"({"openError": 5})"), 0, 0);
        row("last number that is counted", 25, QByteArray("{}"), 1, 1);
        row("number after the last", 26, QByteArray("{}"), 1, 0);
        row("last number of all", 98, QByteArray("{}"), 1, 0);
    }

    void selectsDrives()
    {
        QFETCH(int, number);
        QFETCH(QByteArray, keys);
        const SimulatedMachine machine({drive(number, keys)});
        Inventory inventory(machine.drives());
        QTEST(inventory.detect().size(), "detected");
        QTEST(inventory.count().present, "counted");
    }

    void shortAnswersAreFailures()
    {
        QVERIFY(canBeListed(0));
        QVERIFY(!canBeListed(1));
    }

    void listIsInOrderOfNumbers()
    {
        const SimulatedMachine machine({drive(12), drive(3, R"({"deviceNumber": 40})")});
        Inventory inventory(machine.drives());
        const DeviceList devices = inventory.detect();
        QCOMPARE(devices.size(), 2);
        QCOMPARE(devices.at(0).path, "\\\\.\\PhysicalDrive3");
        QCOMPARE(devices.at(0).deviceNumber, 40);
        QCOMPARE(devices.at(1).path, "\\\\.\\PhysicalDrive12");
    }

    void geometryAndSize()
    {
        const SimulatedMachine machine({drive(0, R"({"bytesPerSector": 4096, "capacity": 20000588955648,
        "geometry": {"cylinders": 303974, "tracksPerCylinder": 254, "sectorsPerTrack": 62}})")});
        Inventory inventory(machine.drives());
        const DeviceRecord device = inventory.detect().value(0);
        QCOMPARE(device.cylinders, Q_INT64_C(303974));
        QCOMPARE(device.tracksPerCylinder, 254U);
        QCOMPARE(device.sectorsPerTrack, 62U);
        QCOMPARE(device.bytesPerSector, 4096U);
        QCOMPARE(device.capacity, Q_UINT64_C(20000588955648)); // not computed from the geometry
    }

    void identity_data()
    {
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<QString>("identity");
        const auto answering = [](const QByteArray &answers) {
            return QByteArray(R"({"answers": ["geometry", "partition", "deviceNumber", )" + answers + "]}");
        };
        row("ATA pass-through", answering(R"("descriptor", "ata", "smart", "ide")"),
            "0: 'ATA PRODUCT' 'SERIAL' 'REV', ATA 9, S.M.A.R.T. 1");
        row("without a descriptor", answering(R"("ata", "smart", "ide")"),
            "0: 'MODEL' 'SERIAL' 'FW', ATA 9, S.M.A.R.T. 1");
        row("S.M.A.R.T. drive data", answering(R"("smart", "ide")"),
            "1: 'MODEL' 'SERIAL' 'FW', ATA 9, S.M.A.R.T. 1");
        row("IDE pass-through", answering(R"("ide")"), "2: 'MODEL' 'SERIAL' 'FW', ATA 9, S.M.A.R.T. 1");
        row("made up from the descriptor", answering(R"("descriptor", "predict")"),
            "3: 'ATA PRODUCT' '  SER' 'REV', ATA 3, S.M.A.R.T. 1");
        row("neither IDENTIFY nor descriptor", answering(R"("predict")"),
            "-1: '' '' '', ATA -1, S.M.A.R.T. 0");
        row("blank descriptor is ignored", QByteArray(R"({"serial": ""})"),
            "0: 'ATA PRODUCT' '  SER' 'REV', ATA 9, S.M.A.R.T. 1");
        row("blanks around vendor and product",
            QByteArray(R"({"descriptor": {"vendor": "ATA  ", "product": " WDC 1  ", "revision": " 2 "}})"),
            "0: 'ATA WDC 1' 'SERIAL' '2', ATA 9, S.M.A.R.T. 1");
        row("a blank descriptor does not count",
            QByteArray(R"({"descriptor": {"vendor": "", "product": " ", "revision": "", "serial": ""}})"),
            "0: 'MODEL' 'SERIAL' 'FW', ATA 9, S.M.A.R.T. 1");
    }

    void identity()
    {
        QFETCH(QByteArray, keys);
        const SimulatedMachine machine({drive(4, keys)});
        Inventory inventory(machine.drives());
        const DeviceRecord device = inventory.detect().value(0);
        const QString format = "%1: '%2' '%3' '%4', ATA %5, S.M.A.R.T. %6";
        QTEST(format.arg(int(device.accessMethod))
                  .arg(device.model, device.serial, device.firmware)
                  .arg(device.ataMajor)
                  .arg(device.smartSupported),
              "identity");
    }
};

QTEST_GUILESS_MAIN(TestDetection)
#include "tst_detection.moc"
