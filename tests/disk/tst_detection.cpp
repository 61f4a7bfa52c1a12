// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/detection.h"

#include "disk/simulated_machine.h"
#include "rows.h"

#include <QtTest>

namespace {

/// A drive that knows itself under other names than its system does, with `text` as its further keys.
QJsonObject drive(int number, const char *text = "{}")
{
    const char kBase[] =
        R"({"model": "MODEL", "serial": "SERIAL", "firmware": "FW", "capacity": 1000204886016,
        "ataMajor": 1020, "ataMinor": 41, "smart": {"enabled": true, "attributes": []},
        "descriptor": {"vendor": "ATA", "product": "PRODUCT", "revision": "REV", "serial": "  SER"}})";
    QJsonObject object = QJsonDocument::fromJson(kBase).object();
    object[QStringLiteral("number")] = number;
    const QJsonObject more = QJsonDocument::fromJson(text).object();
    for (auto it = more.begin(); it != more.end(); ++it)
        object[it.key()] = it.value();
    return object;
}

} // namespace

class TestDetection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void whichDrives_data()
    {
        QTest::addColumn<int>("number");
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<int>("detected");
        QTest::addColumn<int>("counted");
        row("answers what it must", 0,
            QByteArray(R"({"answers": ["geometry", "partition", "deviceNumber"]})"), 1, 1);
        row("no geometry", 0, QByteArray(R"({"answers": ["partition", "deviceNumber", "ata"]})"), 0, 0);
        row("no partition", 0, QByteArray(R"({"answers": ["geometry", "deviceNumber", "ata"]})"), 0, 1);
        row("no device number", 0, QByteArray(R"({"answers": ["geometry", "partition", "ata"]})"), 0, 1);
        row("removable", 0, QByteArray(R"({"mediaType": 11})"), 0, 0);
        row("does not open", 0, QByteArray(R"({"openError": 5})"), 0, 0);
        row("last number that is counted", 25, QByteArray("{}"), 1, 1);
        row("first that is not", 26, QByteArray("{}"), 1, 0);
        row("last number of all", 98, QByteArray("{}"), 1, 0);
    }

    void whichDrives()
    {
        QFETCH(int, number);
        QFETCH(QByteArray, keys);
        const SimulatedMachine machine({drive(number, keys.constData())});
        QTEST(detection::detect(machine.drives()).size(), "detected");
        QTEST(detection::countFixedDrives(machine.drives()), "counted");
    }

    void listIsInOrderOfNumbers()
    {
        const SimulatedMachine machine(
            {drive(12), drive(3, R"({"deviceNumber": 40})"), drive(5, R"({"openError": 2})")});
        const DeviceList devices = detection::detect(machine.drives());
        QCOMPARE(devices.size(), 2);
        QCOMPARE(devices.at(0).path, QStringLiteral("\\\\.\\PhysicalDrive3"));
        QCOMPARE(devices.at(0).deviceNumber, 40);
        QCOMPARE(devices.at(1).path, QStringLiteral("\\\\.\\PhysicalDrive12"));
        QCOMPARE(devices.at(1).deviceNumber, 12);
    }

    void geometryAndSize()
    {
        const SimulatedMachine machine({drive(0, R"({"bytesPerSector": 4096, "capacity": 20000588955648,
        "geometry": {"cylinders": 303974, "tracksPerCylinder": 254, "sectorsPerTrack": 62}})")});
        const DeviceRecord device = detection::probe(machine.drives(), 0).value();
        QCOMPARE(device.cylinders, Q_INT64_C(303974));
        QCOMPARE(device.tracksPerCylinder, 254U);
        QCOMPARE(device.sectorsPerTrack, 62U);
        QCOMPARE(device.bytesPerSector, 4096U);
        QCOMPARE(device.mediaType, 12U);
        QCOMPARE(device.capacity, Q_UINT64_C(20000588955648)); // and not what the geometry makes
        QCOMPARE(device.smartVersion, QStringLiteral("1"));
        QCOMPARE(device.smartRevision, QStringLiteral("1"));
        QCOMPARE(device.smartState, -1);
    }

    void identity_data()
    {
        QTest::addColumn<QByteArray>("answers");
        QTest::addColumn<int>("method");
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("serial");
        QTest::addColumn<QString>("firmware");
        QTest::addColumn<int>("ataMajor");
        QTest::addColumn<int>("smartSupported");
        row("ATA pass-through", QByteArray(R"("descriptor", "ata", "smart", "ide")"), 0, "ATA PRODUCT",
            "SERIAL", "REV", 9, 1);
        row("without a descriptor", QByteArray(R"("ata", "smart", "ide")"), 0, "MODEL", "SERIAL", "FW", 9, 1);
        row("S.M.A.R.T. drive data", QByteArray(R"("smart", "ide")"), 1, "MODEL", "SERIAL", "FW", 9, 1);
        row("IDE pass-through", QByteArray(R"("ide")"), 2, "MODEL", "SERIAL", "FW", 9, 1);
        row("made up from the descriptor", QByteArray(R"("descriptor", "predict")"), 3, "ATA PRODUCT",
            "  SER", "REV", 3, 1);
        row("nobody tells", QByteArray(R"("predict")"), -1, "", "", "", -1, 0);
    }

    void identity()
    {
        QFETCH(QByteArray, answers);
        const QByteArray keys = R"({"answers": ["geometry", "partition", "deviceNumber", )" + answers + "]}";
        const SimulatedMachine machine({drive(4, keys.constData())});
        const DeviceRecord device = detection::probe(machine.drives(), 4).value();
        QTEST(int(device.accessMethod), "method");
        QTEST(device.model, "model");
        QTEST(device.serial, "serial");
        QTEST(device.firmware, "firmware");
        QTEST(device.ataMajor, "ataMajor");
        QTEST(device.smartSupported, "smartSupported");
        QCOMPARE(device.smartVersion, QString());
    }

    void blanks_data()
    {
        QTest::addColumn<QByteArray>("keys");
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("serial");
        row("a blank one does not count", QByteArray(R"({"serial": ""})"), "ATA PRODUCT", "  SER");
        row("a blank descriptor does not count",
            QByteArray(R"({"descriptor": {"vendor": "", "product": " ", "revision": "", "serial": ""}})"),
            "MODEL", "SERIAL");
    }

    void blanks()
    {
        QFETCH(QByteArray, keys);
        const SimulatedMachine machine({drive(0, keys.constData())});
        const DeviceRecord device = detection::probe(machine.drives(), 0).value();
        QTEST(device.model, "model");
        QTEST(device.serial, "serial");
    }
};

QTEST_GUILESS_MAIN(TestDetection)
#include "tst_detection.moc"
