// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_sectors.h"

#include "disk/life_time.h"
#include "wire/attribute_catalogue.h"

#include "rows.h"

using Unit = PowerOnCounter::Unit;
Q_DECLARE_METATYPE(Unit)

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
    device.smart.attributes.clear();
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
        QCOMPARE(device.smart.fullRead, FullRead::Attributes);
        QCOMPARE(device.smart.attributeCount, 2);
        QCOMPARE(device.smart.capability, 0x103);
        const AttributeEntry first = device.smart.attributes.value(0);
        QCOMPARE(first.name, "Raw read error rate");
        QVERIFY(first.description.startsWith("  Indicates the rate"));
        QCOMPARE(first.threshold, 0x33U);
        QCOMPARE(first.notPrefailure, 1U);
        QCOMPARE(first.flagBit2, 0U);
        const AttributeEntry second = device.smart.attributes.value(1);
        QCOMPARE(second.threshold, 0xFFU);
        QCOMPARE(second.notPrefailure, 0U);
        QCOMPARE(second.flagBit2, 1U);
    }

    void catalogueKeepsSpecialSpelling()
    {
        QCOMPARE(attribute_catalogue::description(191),
                 "  Fequency of mistakes as a result of impact loads.");
        QCOMPARE(attribute_catalogue::name(100), "Unknown attribute");
        QCOMPARE(attribute_catalogue::description(100), " Unknown attribute");
    }

    void tableEndsAtAGapOrAtThirty()
    {
        const QByteArray slot("01 0000 64 64 000000000000 00");
        QCOMPARE(recordOf(slot + QByteArray(24, '0') + slot.repeated(2)).smart.attributes.size(), 1);
        QCOMPARE(recordOf(slot.repeated(42)).smart.attributes.size(), 30);
    }

    void onlyAttributesEndTheUpdateBefore()
    {
        DeviceRecord device = readOnce();
        device.smart.previousAttributes = device.smart.attributes;
        device.smart.previousTemperature = device.smart.temperature;
        device.smartEnabled = 1;
        readInto(device, "");
        QCOMPARE(device.smart.fullRead, FullRead::NoAttributes);
        QCOMPARE(device.smartEnabled, 0);
        QCOMPARE(device.smart.previousAttributes.size(), 2);
        readInto(device, "01 0000 64 64 000000000000 00");
        QVERIFY(device.smart.previousAttributes.isEmpty());
        QCOMPARE(device.smart.previousTemperature, 0);
    }

    void temperature()
    {
        QVERIFY(!recordOf("be 0000 46 46 1e0000000000 00"
                          "e7 0000 46 46 1e0000000000 00")
                     .smart.hasTemperature);
        QVERIFY(readOnce().smart.hasTemperature);
        QCOMPARE(recordOf("c2 0000 46 46 640012002900 00").smart.temperature, 100);
        QCOMPARE(recordOf("c2 0000 46 46 650000000000 00").smart.temperature, 10); // in tenths
    }

    void synchronousRead()
    {
        DeviceRecord device = readOnce();
        smart_sectors::applySynchronousRead(device, ByteView(sector("09 3200 58 0c ea0300000000 00"
                                                                    "c2 2200 41 0c 960100000000 00")));
        QCOMPARE(device.smart.attributes.size(), 2);
        QCOMPARE(device.smart.attributes.at(0).current, 88U);
        QCOMPARE(device.smart.attributes.at(0).raw, Q_UINT64_C(1002));
        QCOMPARE(device.smart.attributes.at(0).worst, 89U);
        QCOMPARE(device.smart.powerOn.raw, Q_INT64_C(1002));
        QCOMPARE(device.smart.powerOnRawLast, Q_UINT64_C(1000));
        QCOMPARE(device.smart.temperature, 40);
    }

    /// The raw rule depends on the new slot's attribute, the copied values on the previous one's.
    void synchronousReadOfAnotherTable()
    {
        DeviceRecord device = readOnce();
        smart_sectors::applySynchronousRead(device, ByteView(sector("c2 0000 01 01 c20100000000 00"
                                                                    "09 0000 01 01 c20100000000 00")));
        QCOMPARE(device.smart.powerOn.raw, Q_INT64_C(45));
        QCOMPARE(device.smart.temperature, 450);
        QCOMPARE(device.smart.attributes.at(0).id, 9U);
    }

    void unitIsInferredOnce()
    {
        DeviceRecord device = recordOf("09 0000 64 64 dfab00000000 00"); // 43999
        QCOMPARE(device.smart.powerOn.unit, Unit::Hours);
        readInto(device, "09 0000 64 64 e0ab00000000 00");
        QCOMPARE(device.smart.powerOn.unit, Unit::Hours);
        QCOMPARE(device.smart.powerOn.raw, Q_INT64_C(44000));
        QCOMPARE(device.smart.powerOnRawLast, Q_UINT64_C(44000));
        QCOMPARE(recordOf("09 0000 64 64 e0ab00000000 00").smart.powerOn.unit, Unit::Minutes);
    }

    void measuresUnit_data()
    {
        QTest::addColumn<qint64>("advance");
        QTest::addColumn<Unit>("unit");
        row("counter was reset", qint64(-49997), Unit::Hours);
        row("advance of 1", qint64(1), Unit::Hours);
        row("advance of 2", qint64(2), Unit::Minutes);
        row("advance of 3", qint64(3), Unit::Minutes);
        row("advance of 4", qint64(4), Unit::HalfMinutes);
        row("advance of 10", qint64(10), Unit::HalfMinutes);
        row("advance of 11", qint64(11), Unit::Seconds);
    }

    void measuresUnit()
    {
        QFETCH(qint64, advance);
        DeviceList devices{readOnce()};
        devices[0].smart.powerOnRawLast = 50000;
        devices[0].smart.powerOn.raw = 50000 + advance;
        life_time::classify(devices);
        QTEST(devices[0].smart.powerOn.unit, "unit");
        QVERIFY(devices[0].smart.powerOn.isMeasured);
    }

    void unitIsNotMeasuredWithoutValues()
    {
        DeviceList devices{recordOf("01 0000 64 64 000000000000 00"), readOnce()};
        devices[1].smart.fullRead = FullRead::NoAttributes;
        devices[1].smart.powerOn.unit = Unit::Minutes;
        life_time::classify(devices);
        QVERIFY(!devices[0].smart.powerOn.isMeasured);
        QCOMPARE(devices[0].smart.powerOn.unit, Unit::Unknown);
        QVERIFY(!devices[1].smart.powerOn.isMeasured);
        QCOMPARE(devices[1].smart.powerOn.unit, Unit::Minutes);
    }
};

QTEST_APPLESS_MAIN(TestSmartSectors)
#include "tst_smart_sectors.moc"
