// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "rows.h"
#include "scan/schedule.h"

#include <QtTest>

class TestSchedule : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void due_data()
    {
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("param");
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QTime>("time");
        QTest::addColumn<QDateTime>("now");
        QTest::addColumn<bool>("due");

        const QDate wednesday(2026, 3, 4);
        const QDate sunday(2026, 3, 8);
        const QTime ten(10, 0, 30);
        const auto at = [&](int hour, int minute, int second) {
            return QDateTime(wednesday, QTime(hour, minute, second));
        };
        row("no schedule", 0, 0, wednesday, ten, at(10, 0, 0), false);
        row("unknown kind", 4, 0, wednesday, ten, at(10, 0, 0), false);
        row("daily, 40 s ahead", 2, 0, QDate(), ten, at(9, 59, 50), true);
        row("daily, 42 s ahead", 2, 0, QDate(), ten, at(9, 59, 48), true);
        row("daily, 43 s ahead", 2, 0, QDate(), ten, at(9, 59, 47), false);
        row("daily, this very second", 2, 0, QDate(), ten, at(10, 0, 30), true);
        row("daily, a second late", 2, 0, QDate(), ten, at(10, 0, 31), false);
        row("once, today", 1, 0, wednesday, ten, at(10, 0, 0), true);
        row("once, yesterday", 1, 0, wednesday.addDays(-1), ten, at(10, 0, 0), false);
        row("once, no date", 1, 0, QDate(), ten, at(10, 0, 0), false);
        row("weekly, its day", 3, 2, QDate(), ten, at(10, 0, 0), true);
        row("weekly, the day after", 3, 1, QDate(), ten, at(10, 0, 0), false);
        row("weekly, on Sundays", 3, 6, QDate(), ten, QDateTime(sunday, QTime(10, 0, 0)), true);
        row("weekly, no such day", 3, 7, QDate(), ten, QDateTime(sunday, QTime(10, 0, 0)), false);
        row("no time", 2, 0, wednesday, QTime(), at(0, 0, 0), false);
        row("end of the day, in time", 2, 0, QDate(), QTime(23, 59, 59), at(23, 59, 17), true);
        row("end of the day, missed", 2, 0, QDate(), QTime(23, 59, 59), at(23, 59, 30), false);
        row("midnight, from the day before", 2, 0, QDate(), QTime(0, 0, 5), at(23, 59, 50), false);
        row("midnight", 2, 0, QDate(), QTime(0, 0, 5), at(0, 0, 0), true);
    }

    void due()
    {
        QFETCH(int, kind);
        QFETCH(int, param);
        QFETCH(QDate, date);
        QFETCH(QTime, time);
        QFETCH(QDateTime, now);
        DeviceRecord device;
        device.schedKind = kind;
        device.schedParam = param;
        device.schedDate = date;
        device.schedTime = time;
        QTEST(isScanDue(device, now), "due");
    }

    void dueScanCoversTheDrive()
    {
        DeviceList devices(3);
        devices[1].capacity = 1000204886016;
        devices[1].schedKind = 2;
        devices[1].schedTime = QTime(10, 0, 30);
        devices[2] = devices[1];
        devices[2].capacity = 0;
        const QVector<ScanRequest> scans = dueScans(devices, QDateTime(QDate(2026, 3, 4), QTime(10, 0, 0)));
        QCOMPARE(scans.size(), 2);
        QCOMPARE(scans[0].device, 1);
        QCOMPARE(scans[0].blockSize, 262144);
        QCOMPARE(scans[0].firstSector, qint64(0));
        QCOMPARE(scans[0].lastSector, qint64(1953525167));
        QCOMPARE(scans[1].lastSector, qint64(-1)); // a drive without sectors: no scan starts on that
    }

    void payload_data()
    {
        QTest::addColumn<QString>("payload");
        QTest::addColumn<int>("kind");
        QTest::addColumn<int>("param");
        QTest::addColumn<QDate>("date");
        QTest::addColumn<QTime>("time");
        row("weekly", "1~;3~;6~;260304050607~;x", 3, 6, QDate(2026, 3, 4), QTime(5, 6, 7));
        row("fifth field empty", "1~;1~;0~;991231235959~;", 1, 0, QDate(2099, 12, 31), QTime(23, 59, 59));
        row("no date", "1~;2~;0~;000000050607~;0", 2, 0, QDate(), QTime(5, 6, 7));
        row("no time of day", "1~;2~;0~;260304250607~;0", 2, 0, QDate(2026, 3, 4), QTime());
        row("no digits", "1~;x~;~;yyMMddhhmmss~;0", 0, 0, QDate(), QTime(0, 0, 0));
        row("cut off", "1~;2~;0~;26030405~;0", 2, 0, QDate(2026, 3, 4), QTime(5, 0, 0));
    }

    void payload()
    {
        QFETCH(QString, payload);
        const std::optional<ScheduleChange> change = parseScheduleChange(payload);
        QVERIFY(change.has_value());
        DeviceList devices(2);
        applyScheduleChange(*change, devices);
        QTEST(devices[1].schedKind, "kind");
        QTEST(devices[1].schedParam, "param");
        QTEST(devices[1].schedDate, "date");
        QTEST(devices[1].schedTime, "time");
        QVERIFY(!devices[0].schedDate.isValid());
    }

    void payloadWithoutFiveFields_data()
    {
        QTest::addColumn<QString>("payload");
        row("empty", "");
        row("four", "0~;3~;6~;260304050607");
        row("six", "0~;3~;6~;260304050607~;~;");
    }

    void payloadWithoutFiveFields()
    {
        QFETCH(QString, payload);
        QVERIFY(!parseScheduleChange(payload).has_value());
    }

    void changeOfADeviceThatIsNotThere()
    {
        DeviceList devices(1);
        for (const int index : {-1, 1}) {
            applyScheduleChange({index, 2, 0, QDate(), QTime(1, 2, 3)}, devices);
            QCOMPARE(devices[0].schedKind, 0);
        }
    }
};

QTEST_APPLESS_MAIN(TestSchedule)
#include "tst_schedule.moc"
