// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/life_time.h"

#include <QtTest>

class TestLifeTime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void size_data();
    void size();
    void classify_data();
    void classify();
};

void TestLifeTime::size_data()
{
    QTest::addColumn<quint64>("raw");
    QTest::addColumn<int>("unit");
    QTest::newRow("new") << Q_UINT64_C(0) << 1;
    QTest::newRow("years of hours") << Q_UINT64_C(43999) << 1;
    QTest::newRow("too many for hours") << Q_UINT64_C(44000) << 2;
    QTest::newRow("all 48 bits") << Q_UINT64_C(0xFFFFFFFFFFFF) << 2;
}

void TestLifeTime::size()
{
    QFETCH(quint64, raw);
    QTEST(life_time::unitFromSize(raw), "unit");
}

void TestLifeTime::classify_data()
{
    QTest::addColumn<int>("smartState");
    QTest::addColumn<int>("unitBefore");
    QTest::addColumn<quint64>("before");
    QTest::addColumn<quint64>("now");
    QTest::addColumn<int>("unit");
    QTest::addColumn<bool>("detected");
    QTest::newRow("stood still") << 1 << 2 << Q_UINT64_C(50000) << Q_UINT64_C(50000) << 1 << true;
    QTest::newRow("by 1") << 1 << 1 << Q_UINT64_C(7) << Q_UINT64_C(8) << 1 << true;
    QTest::newRow("by 2") << 1 << 1 << Q_UINT64_C(7) << Q_UINT64_C(9) << 2 << true;
    QTest::newRow("by 3") << 1 << 1 << Q_UINT64_C(7) << Q_UINT64_C(10) << 2 << true;
    QTest::newRow("by 4") << 1 << 1 << Q_UINT64_C(7) << Q_UINT64_C(11) << 3 << true;
    QTest::newRow("by 10") << 1 << 1 << Q_UINT64_C(7) << Q_UINT64_C(17) << 3 << true;
    QTest::newRow("by 11") << 1 << 1 << Q_UINT64_C(7) << Q_UINT64_C(18) << 4 << true;
    QTest::newRow("backwards") << 1 << 2 << Q_UINT64_C(50000) << Q_UINT64_C(3) << 1 << true;
    QTest::newRow("no attribute 9") << 1 << 0 << Q_UINT64_C(0) << Q_UINT64_C(0) << 0 << false;
    QTest::newRow("gave no attributes") << 0 << 2 << Q_UINT64_C(0) << Q_UINT64_C(130) << 2 << false;
    QTest::newRow("never read") << -1 << 2 << Q_UINT64_C(0) << Q_UINT64_C(130) << 2 << false;
}

void TestLifeTime::classify()
{
    QFETCH(int, smartState);
    QFETCH(int, unitBefore);
    QFETCH(quint64, before);
    QFETCH(quint64, now);
    DeviceRecord device;
    device.smartState = smartState;
    device.lifeTimeUnit = unitBefore;
    device.powerOnRawLast = before;
    device.powerOnRaw = now;
    DeviceList devices{device};
    life_time::classify(devices);
    QTEST(devices.at(0).lifeTimeUnit, "unit");
    QTEST(devices.at(0).lifeTimeDetected, "detected");
}

QTEST_APPLESS_MAIN(TestLifeTime)
#include "tst_life_time.moc"
