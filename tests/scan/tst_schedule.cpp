// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "scan/schedule.h"

class TestSchedule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void due_data()
    {
        QTest::addColumn<QString>("schedule"); // kind, day of the week and moment, as a payload has them
        QTest::addColumn<QString>("now");
        QTest::addColumn<bool>("due");
        row("no schedule", "0~;0~;260304100030", "2026-03-04T10:00:00", false);
        row("unknown kind", "4~;0~;260304100030", "2026-03-04T10:00:00", false);
        row("daily, 42 s ahead", "2~;0~;000000100030", "2026-03-04T09:59:48", true);
        row("daily, 43 s ahead", "2~;0~;000000100030", "2026-03-04T09:59:47", false);
        row("daily, this very second", "2~;0~;000000100030", "2026-03-04T10:00:30", true);
        row("daily, a second late", "2~;0~;000000100030", "2026-03-04T10:00:31", false);
        row("once, today", "1~;0~;260304100030", "2026-03-04T10:00:00", true);
        row("once, yesterday", "1~;0~;260303100030", "2026-03-04T10:00:00", false);
        row("once, no date", "1~;0~;000000100030", "2026-03-04T10:00:00", false);
        row("weekly, its day", "3~;2~;000000100030", "2026-03-04T10:00:00", true);
        row("weekly, the day after", "3~;1~;000000100030", "2026-03-04T10:00:00", false);
        row("weekly, on Sundays", "3~;6~;000000100030", "2026-03-08T10:00:00", true);
        row("weekly, no such day", "3~;7~;000000100030", "2026-03-08T10:00:00", false);
        row("no time", "2~;0~;260304250000", "2026-03-04T00:00:00", false);
        row("end of the day, in time", "2~;0~;000000235959", "2026-03-04T23:59:17", true);
        row("end of the day, missed", "2~;0~;000000235959", "2026-03-04T23:59:30", false);
        row("midnight, from the day before", "2~;0~;000000000005", "2026-03-04T23:59:50", false);
        row("midnight", "2~;0~;000000000005", "2026-03-04T00:00:00", true);
    }

    void due()
    {
        QFETCH(QString, schedule);
        QFETCH(QString, now);
        const auto change = parseScheduleChange(QStringLiteral("1~;%1~;").arg(schedule));
        DeviceList devices(2);
        devices[1].capacity = 1000204886016;
        applyScheduleChange(change.value(), devices);
        const QVector<ScanRequest> scans = dueScans(devices, QDateTime::fromString(now, Qt::ISODate));
        QTEST(!scans.isEmpty(), "due");
        if (scans.isEmpty())
            return;
        QCOMPARE(scans.size(), 1);
        QCOMPARE(scans[0].device, 1);
        QCOMPARE(scans[0].blockSize, 262144);
        QCOMPARE(scans[0].firstSector, qint64(0));
        QCOMPARE(scans[0].lastSector, qint64(1953525167));
    }

    void payload_data()
    {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<QString>("schedule"); // of the second drive: kind, day, date and time
        row("weekly", "1~;3~;6~;260304050607~;x", "3 6 2026-03-04 05:06:07");
        row("fifth field empty", "1~;1~;0~;991231235959~;", "1 0 2099-12-31 23:59:59");
        row("no date", "1~;2~;0~;000000050607~;0", "2 0  05:06:07");
        row("no time of day", "1~;2~;0~;260304250607~;0", "2 0 2026-03-04 ");
        row("no digits", "1~;x~;~;yyMMddhhmmss~;0", "0 0  00:00:00");
        row("cut off", "1~;2~;0~;26030405~;0", "2 0 2026-03-04 05:00:00");
        row("no such device", "2~;2~;0~;260304050607~;0", "0 0  ");
        row("negative device", "-1~;2~;0~;260304050607~;0", "0 0  ");
        row("empty", "", "refused");
        row("four fields", "1~;3~;6~;260304050607", "refused");
        row("six fields", "1~;3~;6~;260304050607~;~;", "refused");
    }

    void payload()
    {
        QFETCH(QString, payload);
        QString shown = QStringLiteral("refused");
        if (const auto change = parseScheduleChange(payload)) {
            DeviceList devices(2);
            applyScheduleChange(*change, devices);
            const DeviceRecord &device = devices[1];
            shown = QStringLiteral("%1 %2 ").arg(device.schedKind).arg(device.schedParam) +
                    device.schedDate.toString(Qt::ISODate) + u' ' + device.schedTime.toString(Qt::ISODate);
            QVERIFY(!devices[0].schedTime.isValid());
        }
        QTEST(shown, "schedule");
    }
};

QTEST_APPLESS_MAIN(TestSchedule)
#include "tst_schedule.moc"
