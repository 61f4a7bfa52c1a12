// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/smart_sectors.h"

#include "disk/smart_sector_builder.h"
#include "rows.h"

#include <QtTest>

namespace {

SmartSectors emptySectors()
{
    return {QByteArray(512, '\0'), QByteArray(512, '\0')};
}

/// A record after a full read of attributes 9 (raw 1000) and 194 (raw 30).
DeviceRecord readOnce()
{
    SmartSectors sectors = emptySectors();
    putAttribute(sectors.data, 0, 9, 0x32, 90, 89, "e80300000000");
    putAttribute(sectors.data, 1, 194, 0x22, 70, 60, "1e0000000000");
    DeviceRecord device;
    smart_sectors::applyFullRead(device, sectors);
    return device;
}

} // namespace

class TestSmartSectors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void rawValue_data()
    {
        QTest::addColumn<int>("id");
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<quint64>("raw");
        row("all six bytes", 5, QByteArray("0102030405f6"), Q_UINT64_C(0xF60504030201));
        row("degrees", 194, QByteArray("2d0000000000"), Q_UINT64_C(45));
        row("tenths of a degree", 194, QByteArray("c20100000000"), Q_UINT64_C(45));
        row("the hottest in degrees", 194, QByteArray("640000000000"), Q_UINT64_C(100));
        row("the coldest in tenths", 194, QByteArray("650000000000"), Q_UINT64_C(10));
        row("extremes above the degrees", 194, QByteArray("190012002900"), Q_UINT64_C(25));
        row("other temperatures stay", 190, QByteArray("c20100000000"), Q_UINT64_C(450));
    }

    void rawValue()
    {
        QFETCH(int, id);
        QFETCH(QByteArray, bytes);
        SmartSectors sectors = emptySectors();
        putAttribute(sectors.data, 0, id, 0, 0, 0, bytes.constData());
        DeviceRecord device;
        smart_sectors::applyFullRead(device, sectors);
        QTEST(device.attributes.value(0).raw, "raw");
    }

    void entryFields()
    {
        SmartSectors sectors = emptySectors();
        putAttribute(sectors.data, 0, 1, 0x8000, 200, 199, "000000000000");
        putAttribute(sectors.data, 1, 10, 0x0105, 253, 252, "000000000000");
        sectors.data[362] = char(0x82);
        sectors.data[367] = char(0x5B);
        sectors.data[368] = 3;
        sectors.data[369] = 1;
        // Thresholds belong by place: the second one names another attribute.
        sectors.thresholds.replace(2, 2, QByteArray::fromHex("0133"));
        sectors.thresholds.replace(14, 2, QByteArray::fromHex("63ff"));

        DeviceRecord device;
        smart_sectors::applyFullRead(device, sectors);
        QCOMPARE(device.smartState, 1);
        QCOMPARE(device.attributeCount, 2);
        QCOMPARE(device.offlineStatus, 0x82);
        QCOMPARE(device.offlineCapability, 0x5B);
        QCOMPARE(device.smartCapability, 0x103);

        const AttributeEntry first = device.attributes.value(0);
        QCOMPARE(first.id, 1U);
        QCOMPARE(first.name, QStringLiteral("Raw read error rate"));
        QVERIFY(first.description.startsWith(QStringLiteral("  Indicates the rate")));
        QCOMPARE(first.current, 200U);
        QCOMPARE(first.worst, 199U);
        QCOMPARE(first.threshold, 0x33U);
        QCOMPARE(first.flags, 0x8000U);
        QCOMPARE(first.notPrefailure, 1U);
        QCOMPARE(first.flagBit2, 0U);
        const AttributeEntry second = device.attributes.value(1);
        QCOMPARE(second.threshold, 0xFFU);
        QCOMPARE(second.notPrefailure, 0U);
        QCOMPARE(second.flagBit2, 1U);
    }

    void tableEnds_data()
    {
        QTest::addColumn<QList<int>>("slots_");
        QTest::addColumn<int>("count");
        QList<int> all;
        for (int i = 0; i < 42; ++i)
            all << i;
        row("behind the last attribute", QList<int>{0, 1}, 2);
        row("at a gap", QList<int>{0, 2, 3}, 1);
        row("at thirty, whatever follows", all, 30);
    }

    void tableEnds()
    {
        QFETCH(QList<int>, slots_);
        SmartSectors sectors = emptySectors();
        for (const int slot : qAsConst(slots_))
            putAttribute(sectors.data, slot, 1 + slot, 0, 100, 100, "000000000000");
        DeviceRecord device;
        smart_sectors::applyFullRead(device, sectors);
        QTEST(device.attributes.size(), "count");
    }

    void emptyTable()
    {
        DeviceRecord device;
        device.smartEnabled = 1;
        device.attributesPending.resize(1);
        smart_sectors::applyFullRead(device, emptySectors());
        QCOMPARE(device.smartState, 0);
        QCOMPARE(device.smartEnabled, 0);
        QCOMPARE(device.attributesPending.size(), 1);
    }

    void fullReadForgetsTheUpdateBefore()
    {
        DeviceRecord device = readOnce();
        device.attributesPending = device.attributes;
        device.previousTemperature = device.temperature;
        SmartSectors sectors = emptySectors();
        putAttribute(sectors.data, 0, 1, 0, 100, 100, "000000000000");
        smart_sectors::applyFullRead(device, sectors);
        QVERIFY(device.attributesPending.isEmpty());
        QCOMPARE(device.previousTemperature, 0);
    }

    void lifeTimeUnitIsSetOnce()
    {
        DeviceRecord device;
        SmartSectors sectors = emptySectors();
        putAttribute(sectors.data, 0, 9, 0, 100, 100, "50c300000000"); // 50000
        smart_sectors::applyFullRead(device, sectors);
        QCOMPARE(device.lifeTimeUnit, 2);

        device.attributes.clear();
        putAttribute(sectors.data, 0, 9, 0, 100, 100, "640000000000");
        smart_sectors::applyFullRead(device, sectors);
        QCOMPARE(device.lifeTimeUnit, 2);
        QCOMPARE(device.powerOnRaw, Q_UINT64_C(100));
        QCOMPARE(device.powerOnRawLast, Q_UINT64_C(100));
    }

    void temperatureOfOtherAttributesIsNone()
    {
        DeviceRecord device;
        SmartSectors sectors = emptySectors();
        putAttribute(sectors.data, 0, 190, 0, 70, 70, "1e0000000000");
        putAttribute(sectors.data, 1, 231, 0, 70, 70, "1e0000000000");
        smart_sectors::applyFullRead(device, sectors);
        QVERIFY(!device.hasTemperature);

        device = readOnce();
        QVERIFY(device.hasTemperature);
        QCOMPARE(device.temperature, 30);
    }

    void synchronousRead()
    {
        DeviceRecord device = readOnce();
        QByteArray data(512, '\0');
        putAttribute(data, 0, 9, 0x32, 88, 12, "ea0300000000");
        putAttribute(data, 1, 194, 0x22, 65, 12, "960100000000");
        smart_sectors::applySynchronousRead(device, ByteView(data));

        QCOMPARE(device.attributes.size(), 2);
        QCOMPARE(device.attributes.at(0).current, 88U);
        QCOMPARE(device.attributes.at(0).raw, Q_UINT64_C(1002));
        QCOMPARE(device.attributes.at(0).worst, 89U);
        QCOMPARE(device.powerOnRaw, Q_UINT64_C(1002));
        QCOMPARE(device.powerOnRawLast, Q_UINT64_C(1000));
        QCOMPARE(device.temperature, 40);
        QCOMPARE(device.smartState, 1);
    }

    /// The raw rule goes by what stands in the new slot, the copies by what stood there before.
    void synchronousReadOfAnotherTable()
    {
        DeviceRecord device = readOnce();
        QByteArray data(512, '\0');
        putAttribute(data, 0, 194, 0, 1, 1, "c20100000000");
        putAttribute(data, 1, 9, 0, 1, 1, "c20100000000");
        smart_sectors::applySynchronousRead(device, ByteView(data));
        QCOMPARE(device.powerOnRaw, Q_UINT64_C(45));
        QCOMPARE(device.temperature, 450);
        QCOMPARE(device.attributes.at(0).id, 9U);
    }
};

QTEST_APPLESS_MAIN(TestSmartSectors)
#include "tst_smart_sectors.moc"
