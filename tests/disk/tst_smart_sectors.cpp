// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_sectors.h"

#include "disk/life_time.h"
#include "wire/attribute_catalogue.h"

#include <QtTest>

namespace {

/// Returns a sector with these slots, in hexadecimal digits. A data slot has the id, two bytes of flags,
/// current, worst, a raw value of six bytes and one more byte. A threshold slot has the id, the threshold and
/// ten more bytes.
QByteArray sector(const QByteArray &table)
{
    return QByteArray::fromHex("0000" + table).leftJustified(512, '\0');
}

void readInto(DeviceRecord &device, const QByteArray &table)
{
    device.attributes.clear();
    smart_sectors::applyFullRead(device, {sector(table), sector({})});
}

DeviceRecord recordOf(const QByteArray &table)
{
    DeviceRecord device;
    readInto(device, table);
    return device;
}

/// Returns a record after a full read of attributes 9 (raw 1000) and 194 (raw 30).
DeviceRecord readOnce()
{
    return recordOf("09 3200 5a 59 e80300000000 00"
                    "c2 2200 46 3c 1e0000000000 00");
}

} // namespace

class TestSmartSectors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void entryFields()
    {
        QByteArray data = sector("01 0080 c8 c7 000000000000 00"
                                 "0a 0501 fd fc 000000000000 00");
        data.replace(368, 2, QByteArray::fromHex("0301"));
        // Thresholds are assigned by slot: the second one names another attribute.
        const QByteArray thresholds = sector("01 33 00000000000000000000"
                                             "63 ff 00000000000000000000");
        DeviceRecord device;
        smart_sectors::applyFullRead(device, {data, thresholds});
        QCOMPARE(device.smartState, 1);
        QCOMPARE(device.attributeCount, 2);
        QCOMPARE(device.smartCapability, 0x103);
        const AttributeEntry first = device.attributes.value(0);
        QCOMPARE(first.name, QStringLiteral("Raw read error rate"));
        QVERIFY(first.description.startsWith(QStringLiteral("  Indicates the rate")));
        QCOMPARE(first.threshold, 0x33U);
        QCOMPARE(first.notPrefailure, 1U);
        QCOMPARE(first.flagBit2, 0U);
        const AttributeEntry second = device.attributes.value(1);
        QCOMPARE(second.threshold, 0xFFU);
        QCOMPARE(second.notPrefailure, 0U);
        QCOMPARE(second.flagBit2, 1U);
    }

    void catalogueKeepsSpecialSpelling()
    {
        QCOMPARE(attribute_catalogue::description(191),
                 QStringLiteral("  Fequency of mistakes as a result of impact loads."));
        QCOMPARE(attribute_catalogue::name(100), QStringLiteral("Unknown attribute"));
        QCOMPARE(attribute_catalogue::description(100), QStringLiteral(" Unknown attribute"));
    }

    void tableEndsAtAGapOrAtThirty()
    {
        const QByteArray slot("01 0000 64 64 000000000000 00");
        QCOMPARE(recordOf(slot + QByteArray(24, '0') + slot.repeated(2)).attributes.size(), 1);
        QCOMPARE(recordOf(slot.repeated(42)).attributes.size(), 30);
    }

    void onlyAttributesEndTheUpdateBefore()
    {
        DeviceRecord device = readOnce();
        device.attributesPending = device.attributes;
        device.previousTemperature = device.temperature;
        device.smartEnabled = 1;
        readInto(device, "");
        QCOMPARE(device.smartState, 0);
        QCOMPARE(device.smartEnabled, 0);
        QCOMPARE(device.attributesPending.size(), 2);
        readInto(device, "01 0000 64 64 000000000000 00");
        QVERIFY(device.attributesPending.isEmpty());
        QCOMPARE(device.previousTemperature, 0);
    }

    void temperature()
    {
        QVERIFY(!recordOf("be 0000 46 46 1e0000000000 00"
                          "e7 0000 46 46 1e0000000000 00")
                     .hasTemperature);
        QVERIFY(readOnce().hasTemperature);
        QCOMPARE(recordOf("c2 0000 46 46 640012002900 00").temperature, 100);
        QCOMPARE(recordOf("c2 0000 46 46 650000000000 00").temperature, 10); // in tenths
    }

    void synchronousRead()
    {
        DeviceRecord device = readOnce();
        smart_sectors::applySynchronousRead(device, ByteView(sector("09 3200 58 0c ea0300000000 00"
                                                                    "c2 2200 41 0c 960100000000 00")));
        QCOMPARE(device.attributes.size(), 2);
        QCOMPARE(device.attributes.at(0).current, 88U);
        QCOMPARE(device.attributes.at(0).raw, Q_UINT64_C(1002));
        QCOMPARE(device.attributes.at(0).worst, 89U);
        QCOMPARE(device.powerOnRaw, Q_UINT64_C(1002));
        QCOMPARE(device.powerOnRawLast, Q_UINT64_C(1000));
        QCOMPARE(device.temperature, 40);
    }

    /// The raw rule depends on the new slot's attribute, the copied values on the previous one's.
    void synchronousReadOfAnotherTable()
    {
        DeviceRecord device = readOnce();
        smart_sectors::applySynchronousRead(device, ByteView(sector("c2 0000 01 01 c20100000000 00"
                                                                    "09 0000 01 01 c20100000000 00")));
        QCOMPARE(device.powerOnRaw, Q_UINT64_C(45));
        QCOMPARE(device.temperature, 450);
        QCOMPARE(device.attributes.at(0).id, 9U);
    }

    void lifeTimeUnitIsSetOnce()
    {
        DeviceRecord device = recordOf("09 0000 64 64 dfab00000000 00"); // 43999
        QCOMPARE(device.lifeTimeUnit, 1);
        readInto(device, "09 0000 64 64 e0ab00000000 00");
        QCOMPARE(device.lifeTimeUnit, 1);
        QCOMPARE(device.powerOnRaw, Q_UINT64_C(44000));
        QCOMPARE(device.powerOnRawLast, Q_UINT64_C(44000));
        QCOMPARE(recordOf("09 0000 64 64 e0ab00000000 00").lifeTimeUnit, 2);
    }

    void lifeTimeByAdvance()
    {
        DeviceList devices;
        for (const int now : {3, 50001, 50002, 50003, 50004, 50010, 50011}) {
            devices << readOnce();
            devices.last().powerOnRawLast = 50000;
            devices.last().powerOnRaw = quint64(now);
        }
        devices << recordOf("01 0000 64 64 000000000000 00") << readOnce();
        devices.last().smartState = 0;
        devices.last().lifeTimeUnit = 2;
        life_time::classify(devices);
        QString units;
        for (const DeviceRecord &device : qAsConst(devices))
            units += QString::number(device.lifeTimeUnit) + QLatin1String(device.lifeTimeDetected ? "" : "?");
        QCOMPARE(units, QStringLiteral("11223340?2?"));
    }
};

QTEST_APPLESS_MAIN(TestSmartSectors)
#include "tst_smart_sectors.moc"
