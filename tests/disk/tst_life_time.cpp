// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/life_time.h"
#include "rows.h"

#include <QtTest>

class TestLifeTime : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void size_data()
    {
        QTest::addColumn<quint64>("raw");
        QTest::addColumn<int>("unit");
        row("new", Q_UINT64_C(0), 1);
        row("years of hours", Q_UINT64_C(43999), 1);
        row("too many for hours", Q_UINT64_C(44000), 2);
        row("all 48 bits", Q_UINT64_C(0xFFFFFFFFFFFF), 2);
    }

    void size()
    {
        QFETCH(quint64, raw);
        QTEST(life_time::unitFromSize(raw), "unit");
    }

    void classify_data()
    {
        QTest::addColumn<int>("smartState");
        QTest::addColumn<int>("unitBefore");
        QTest::addColumn<quint64>("before");
        QTest::addColumn<quint64>("now");
        QTest::addColumn<int>("unit");
        QTest::addColumn<bool>("detected");
        row("stood still", 1, 2, Q_UINT64_C(50000), Q_UINT64_C(50000), 1, true);
        row("by 1", 1, 1, Q_UINT64_C(7), Q_UINT64_C(8), 1, true);
        row("by 2", 1, 1, Q_UINT64_C(7), Q_UINT64_C(9), 2, true);
        row("by 3", 1, 1, Q_UINT64_C(7), Q_UINT64_C(10), 2, true);
        row("by 4", 1, 1, Q_UINT64_C(7), Q_UINT64_C(11), 3, true);
        row("by 10", 1, 1, Q_UINT64_C(7), Q_UINT64_C(17), 3, true);
        row("by 11", 1, 1, Q_UINT64_C(7), Q_UINT64_C(18), 4, true);
        row("backwards", 1, 2, Q_UINT64_C(50000), Q_UINT64_C(3), 1, true);
        row("no attribute 9", 1, 0, Q_UINT64_C(0), Q_UINT64_C(0), 0, false);
        row("gave no attributes", 0, 2, Q_UINT64_C(0), Q_UINT64_C(130), 2, false);
        row("never read", -1, 2, Q_UINT64_C(0), Q_UINT64_C(130), 2, false);
    }

    void classify()
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
};

QTEST_APPLESS_MAIN(TestLifeTime)
#include "tst_life_time.moc"
