// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "scan/schedule.h"

#include "disk/date_time_text.h"
#include "rows.h"

class TestSchedule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void due_data()
    {
        QTest::addColumn<QString>("schedule"); // kind, day of the week and moment
        QTest::addColumn<QString>("now");
        QTest::addColumn<bool>("due");
        row("no schedule → not due", "0 0 260304100030", "2026-03-04T10:00:00", false);
        row("unknown kind → not due", "4 0 260304100030", "2026-03-04T10:00:00", false);
        row("daily, 42 s ahead → due", "2 0 000000100030", "2026-03-04T09:59:48", true);
        row("daily, 43 s ahead → not due", "2 0 000000100030", "2026-03-04T09:59:47", false);
        row("daily, this very second → due", "2 0 000000100030", "2026-03-04T10:00:30", true);
        row("daily, a second late → not due", "2 0 000000100030", "2026-03-04T10:00:31", false);
        row("once, today → due", "1 0 260304100030", "2026-03-04T10:00:00", true);
        row("once, yesterday → not due", "1 0 260303100030", "2026-03-04T10:00:00", false);
        row("once, no date → not due", "1 0 000000100030", "2026-03-04T10:00:00", false);
        row("weekly, its day → due", "3 2 000000100030", "2026-03-04T10:00:00", true);
        row("weekly, the day after → not due", "3 1 000000100030", "2026-03-04T10:00:00", false);
        row("weekly, on Sundays → due", "3 6 000000100030", "2026-03-08T10:00:00", true);
        row("weekly, no such day → not due", "3 7 000000100030", "2026-03-08T10:00:00", false);
        row("hour 25 → not due", "2 0 260304250000", "2026-03-04T00:00:00", false);
        row("time that is not a number → not due", "2 0 260304xxyyzz", "2026-03-04T00:00:00", false);
        row("minutes and seconds missing → not due", "2 0 26030400", "2026-03-04T00:00:00", false);
        row("end of the day, in time → due", "2 0 000000235959", "2026-03-04T23:59:17", true);
        row("end of the day, missed → not due", "2 0 000000235959", "2026-03-04T23:59:30", false);
        row("midnight, from the day before → not due", "2 0 000000000005", "2026-03-04T23:59:50", false);
        row("midnight → due", "2 0 000000000005", "2026-03-04T00:00:00", true);
    }

    void due()
    {
        QFETCH(QString, schedule);
        QFETCH(QString, now);
        const QStringList parts = schedule.split(u' ');
        const DateAndTime moment = parseDateTime(parts[2]);
        DeviceList devices(2);
        devices[1].capacity = 1000204886016;
        applyScheduleChange({1, {ScheduleKind(parts[0].toInt()), parts[1].toInt(), moment.date, moment.time}},
                            devices);
        const QVector<ScanRequest> scans =
            dueScans(devices, ServedSchedules(), QDateTime::fromString(now, Qt::ISODate));
        QTEST(!scans.isEmpty(), "due");
        if (scans.isEmpty())
            return;
        QCOMPARE(scans.size(), 1);
        QCOMPARE(scans[0].device, 1);
        QCOMPARE(scans[0].blockSize, 262144);
        QCOMPARE(scans[0].firstSector, qint64(0));
        QCOMPARE(scans[0].lastSector, qint64(1953525167));
    }

    void servedMomentIsNotDueAgain()
    {
        DeviceList devices(2);
        for (int i = 0; i < devices.size(); ++i) {
            devices[i].path = QString::number(i);
            applyScheduleChange({i, {ScheduleKind::Daily, 0, {}, QTime(10, 0, 30)}}, devices);
        }
        const QDateTime now(QDate(2026, 3, 4), QTime(10, 0, 0));
        ServedSchedules served;
        served.serve(devices.at(0), now.date());
        const QVector<ScanRequest> due = dueScans(devices, served, now.addSecs(20));
        QCOMPARE(due.size(), 1);
        QCOMPARE(due.at(0).device, 1);
        QCOMPARE(dueScans(devices, served, now.addDays(1)).size(), 2);
        devices[0].schedule.time = QTime(10, 0, 40); // changed: another moment
        QCOMPARE(dueScans(devices, served, now).size(), 2);
    }
};

QTEST_APPLESS_MAIN(TestSchedule)
#include "tst_schedule.moc"
