// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/greeting.h"
#include "protocol/payloads.h"
#include "rows.h"

#include <QtTest>

Q_DECLARE_METATYPE(DeviceRecord)
Q_DECLARE_METATYPE(DeviceList)

namespace {

constexpr quint64 kNegativeRaw = quint64(-2); ///< payloads show raw values as signed

AttributeEntry attribute(quint32 id, quint32 current, quint64 raw)
{
    AttributeEntry entry;
    entry.id = id;
    entry.flags = 7;
    entry.notPrefailure = 0;
    entry.flagBit2 = 1;
    entry.current = current;
    entry.raw = raw;
    entry.worst = current - 1;
    entry.threshold = 6;
    return entry;
}

VolumeEntry volumeC()
{
    VolumeEntry volume;
    volume.ordinal = 3;
    volume.volumeName = QStringLiteral("name");
    volume.root = QStringLiteral("C:\\");
    volume.label = QStringLiteral("System %1");
    volume.fileSystem = QStringLiteral("NTFS");
    volume.volumeSerial = QStringLiteral("1234-ABCD");
    volume.deviceNumber = 4;
    volume.totalBytes = 18446744073709551615ULL;
    volume.freeBytes = 120;
    return volume;
}

/// Every field differs from every other, so that no two can be swapped unseen.
DeviceRecord fullDevice()
{
    DeviceRecord device;
    device.model = QStringLiteral("Model %2");
    device.serial = QStringLiteral("Serial");
    device.firmware = QStringLiteral("Firm");
    device.capacity = 18446744073709551615ULL;
    device.ataMajor = -1;
    device.ataVersion = QStringLiteral("ATA8");
    device.smartState = 1;
    device.cylinders = -9000000000LL;
    device.tracksPerCylinder = 255;
    device.sectorsPerTrack = 63;
    device.bytesPerSector = 4294967295U;
    device.offlineStatus = 130;
    device.offlineCapability = 83;
    device.smartCapability = 3;
    device.attributeCount = 2;
    device.attributes = {attribute(9, 100, 4711), attribute(194, 40, kNegativeRaw)};
    device.volumes = {volumeC()};
    device.lifeTimeDetected = true;
    device.lifeTimeUnit = 4;
    device.powerOnRaw = 4711;
    device.powerOnRawLast = kNegativeRaw;
    device.hasTemperature = true;
    device.temperature = -5;
    device.statusLevel = 2;
    device.health = 97;
    device.monitored = 257;
    device.scanTime = QDateTime(QDate(2026, 11, 5), QTime(9, 8, 7));
    device.scanPercent = 12;
    device.scanFirst = 63;
    device.scanCurrent = 9000000000;
    device.schedKind = 3;
    device.schedParam = 6;
    device.schedDate = QDate(2009, 2, 1);
    device.schedTime = QTime(23, 0, 5);
    return device;
}

DeviceRecord untouched()
{
    DeviceRecord device;
    device.scanTime = QDateTime(QDate(1980, 1, 1), QTime(0, 0));
    return device;
}

DeviceRecord failedScan()
{
    DeviceRecord device = fullDevice();
    device.scanError = 1;
    device.badRanges = {{0, 127}, {256, 9000000000}};
    return device;
}

const QString kFullDevice =
    QStringLiteral("Model %2~;Serial~;Firm~;18446744073709551615~;-1~;ATA8~;1~;-9000000000~;255~;63~;"
                   "4294967295~;130~;83~;3~;2~;1~;1~;4~;4711~;-2~;1~;-5~;2~;97~;1");
const QString kUntouched =
    QStringLiteral("~;~;~;0~;-1~;~;-1~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;3~;0~;1");
const QString kVolumeC = QStringLiteral("C:\\~;System %1~;NTFS~;1234-ABCD~;18446744073709551615~;120");

} // namespace

class TestPayloads : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void ofOneDevice_data()
    {
        QTest::addColumn<DeviceRecord>("device");
        QTest::addColumn<QString>("information");
        QTest::addColumn<QString>("values");
        QTest::addColumn<QString>("inventory");

        DeviceRecord oneAttribute = untouched();
        oneAttribute.attributes = {attribute(9, 100, 4711)};

        row("never read", untouched(), "{}", "{}", kUntouched);
        row("one attribute", oneAttribute, "{9~0~1~100~4711~99~6}", "{9~;10}", kUntouched);
        row("two attributes", fullDevice(), "{9~0~1~100~4711~99~6;194~0~1~40~-2~39~6}", "{9~;100194~;4}",
            kFullDevice);
    }

    void ofOneDevice()
    {
        QFETCH(DeviceRecord, device);
        QTEST(payload::smartInformation(device), "information");
        QTEST(payload::smartValues(device), "values");
        QTEST(payload::device(device), "inventory");
    }

    void ofTheList_data()
    {
        QTest::addColumn<DeviceList>("devices");
        QTest::addColumn<QString>("inventory");
        QTest::addColumn<QString>("volumes");
        QTest::addColumn<QString>("smart");
        QTest::addColumn<QString>("scan"); // the device at index 1 is being scanned
        QTest::addColumn<QString>("schedule");

        row("no devices", DeviceList{}, "0", "0", "0", "", "");
        row("a bare device", DeviceList{untouched()}, kUntouched, "", "", "0;0;0;0;0;800101000000",
            "]![0~;0~;0~;~;");
        row("two devices", DeviceList{failedScan(), fullDevice()},
            kFullDevice + QLatin1String("]~[") + kFullDevice,
            QLatin1String("0~;") + kVolumeC + QLatin1String("]~[1~;") + kVolumeC,
            "0~;9~;7~;0~;1~;0~;100~;4711~;99~;6]~[0~;194~;7~;0~;1~;0~;40~;-2~;39~;6]~["
            "1~;9~;7~;0~;1~;0~;100~;4711~;99~;6]~[1~;194~;7~;0~;1~;0~;40~;-2~;39~;6",
            "0;2;12;63;9000000000;261105090807;0-127,256-9000000000|1;1;12;63;9000000000;261105090807",
            "]![0~;3~;6~;090201~;230005]![1~;3~;6~;090201~;230005");
    }

    void ofTheList()
    {
        QFETCH(DeviceList, devices);
        QTEST(payload::allDevices(devices), "inventory");
        QTEST(payload::allVolumes(devices), "volumes");
        QTEST(payload::allSmart(devices), "smart");
        QTEST(payload::scanStatus(devices, [](int device) { return device == 1; }), "scan");
        QTEST(payload::scanSchedule(devices), "schedule");
    }

    void greetingFillsPlaceholdersInTurn_data()
    {
        QTest::addColumn<QString>("subject");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("line");
        const QString head =
            QStringLiteral("VER]![Halvex Service v 5.0.5]![5000]![180000]![300000]![host]![2]![1]![0]![1]![");
        row("plain texts", "s", "f",
            head + QStringLiteral(
                       "f]![to]![s]![srv]![25]![0]![me]![pw]![55]![65]![16909060.1700000000]![warn]![crit"));
        row("a later placeholder", "<%22>", "f",
            head + QStringLiteral("f]![to]![<warn>]![srv]![25]![0]![me]![pw]![55]![65]![16909060.1700000000]!"
                                  "[warn]![crit"));
        // The earlier number takes the next field, and every field behind it moves up by one place.
        row("an earlier placeholder", "s", "<%3>",
            head +
                QStringLiteral(
                    "<to>]![s]![srv]![25]![0]![me]![pw]![55]![65]![warn]![16909060.1700000000]![crit]![%23"));
    }

    void greetingFillsPlaceholdersInTurn()
    {
        QFETCH(QString, subject);
        QFETCH(QString, from);
        Settings settings;
        settings.alertLevel = 2;
        settings.logSysEvLog = true;
        settings.smtpFrom = from;
        settings.smtpTo = QStringLiteral("to");
        settings.smtpSubj = subject;
        settings.smtpServer = QStringLiteral("srv");
        settings.smtpUser = QStringLiteral("me");
        settings.smtpPass = QStringLiteral("pw");
        settings.warnExtTask = QStringLiteral("warn");
        settings.critExtTask = QStringLiteral("crit");
        QTEST(greeting(settings, QStringLiteral("host"), QStringLiteral("16909060"), 1700000000), "line");
    }
};

QTEST_APPLESS_MAIN(TestPayloads)
#include "tst_payloads.moc"
