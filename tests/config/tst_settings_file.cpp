// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings_file.h"
#include "rows.h"

namespace {

/// Returns a file of these lines, the last one without its line feed.
QByteArray fileOf(const QString &text)
{
    QByteArray file;
    for (const QString &line : text.split(u'\n'))
        file += scramble(line, 7) + '\n';
    return file.chopped(1);
}

/// Returns the lines to be written, so that one comparison shows every field that changed.
QString written(const Settings &settings, const DeviceList &devices = {})
{
    QStringList lines;
    for (const QByteArray &line : settingsFileText(settings, devices, [] { return 99; }).split('\n'))
        lines.append(line.isEmpty() ? QString() : unscramble(line));
    return lines.join(u'\n');
}

DeviceList twoDrives()
{
    DeviceList devices(2);
    devices[0].capacity = 1000204886016;
    devices[1].capacity = 4096;
    return devices;
}

const QDateTime kNow(QDate(2026, 3, 4), QTime(5, 6, 7));

} // namespace

class TestSettingsFile : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void settingsLine_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("line"); // the line written for the key; empty: no line has changed
        const auto file = [](const char *lines) { return fileOf(QString::fromUtf8(lines)); };
        row("flag on", file("emailNotify=1"), "emailNotify=1");
        row("flag of two", file("emailNotify=2"), "");
        row("flag that is no number", file("popupNotify=yes"), "popupNotify=0");
        row("limit too hot", file("cTemp=100"), "");
        row("port too high", file("smtpPort=100000"), "");
        row("text keeps its blanks", file("smtpSubj= hot disk "), "smtpSubj= hot disk ");
        row("text beyond 8 bits", file(u8"smtpSubj=\u0394\u2603"), u8"smtpSubj=\u0394\u2603");
        row("key twice", file("smtpUser=a smtpUser=b"), "smtpUser=a b");
        // cTemp= is matched first and removed, although its value is not a number then.
        row("key within a text", file("smtpSubj=at cTemp=70"), "smtpSubj=at 70");
        row("line of a drive", file("disk=0!0!99!1!0!0"), "");
        row("the later line, if it fits", file("cTemp=60\ncTemp=70\ncTemp=0"), "cTemp=70");
        row("plain text", QByteArray("emailNotify=1\ncTemp=70\n"), "");
        row("a line cut off", file("cTemp=70").chopped(1), "");
        row("other bytes around a line", QByteArray(70000, '\xff') + '\n' + file("cTemp=70") + "\n\n",
            "cTemp=70");
    }

    void settingsLine()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, line);
        QStringList expected = written(Settings()).split(u'\n');
        const QString key = line.left(line.indexOf(u'=') + 1);
        for (QString &text : expected) {
            if (!key.isEmpty() && text.startsWith(key))
                text = line;
        }
        Settings settings;
        readSettingsLines(file, settings);
        QCOMPARE(written(settings).split(u'\n'), expected);
    }

    /// Reading and writing keeps everything that a file can contain.
    void wholeFile()
    {
        const QString text = QStringLiteral("popupNotify=0\n"
                                            "emailNotify=1\n"
                                            "cTemp=61\n"
                                            "wTemp=51\n"
                                            "logSysEvLog=1\n"
                                            "smtpNeedAuth=1\n"
                                            "smtpPort=587\n"
                                            "smtpFrom=from\n"
                                            "smtpTo=to\n"
                                            "smtpSubj=subject\n"
                                            "smtpServer=server\n"
                                            "smtpUser=user\n"
                                            "smtpPass=%1!\n"
                                            "warnExtTask=warn\n"
                                            "critExtTask=crit\n"
                                            "disk=0!0!1953525167!3!6!1772600767\n"
                                            "disk=1!3!5!1!4!4294967295\n" // no time of day
                                            "scan=0;0;42;1;1953525167;260304050607;128-255,384-400,\n"
                                            "scan=1;0;0;0;7;;\n");
        Settings settings;
        readSettingsLines(fileOf(text), settings);
        DeviceList devices = twoDrives();
        devices[0].scan.hasOpenFailed = true;
        readDriveState(fileOf(text), devices, kNow);
        QCOMPARE(written(settings, devices), text);

        const QStringList texts{settings.smtpFrom,    settings.smtpTo,     settings.smtpSubj,
                                settings.smtpServer,  settings.smtpUser,   settings.smtpPass,
                                settings.warnExtTask, settings.critExtTask};
        QCOMPARE(texts.join(u' '), "from to subject server user %1! warn crit");
        const DeviceRecord &device = devices[0];
        QCOMPARE(QDateTime(device.schedule.date, device.schedule.time).toSecsSinceEpoch(),
                 qint64(1772600767));
        QCOMPARE(device.schedule.kind, ScheduleKind::Weekly);
        QCOMPARE(device.schedule.weekday, 6);
        QVERIFY(!device.scan.hasOpenFailed); // not stored
        QCOMPARE(device.scan.percent, 42);
        QCOMPARE(device.scan.time, kNow);
        QVERIFY(!devices[1].schedule.time.isValid());
    }

    void initialDriveState()
    {
        DeviceList devices(2);
        devices[0].capacity = 4096; // the other drive has none
        readDriveState({}, devices, kNow);
        QCOMPARE(written(Settings(), devices).section("disk=", 1),
                 QString("0!0!7!0!0!%1\ndisk=1!0!0!0!0!%1\n"
                         "scan=0;0;0;0;7;800101000000;\nscan=1;0;0;0;0;800101000000;\n")
                     .arg(kNow.toSecsSinceEpoch()));
        QCOMPARE(devices[0].scan.time.date().year(), 1980);
    }

    void driveLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("state"); // kind of both drives' schedules; the second's percent and ranges
        row("first drive's schedule", "disk=0!0!99!2!0!0", "2 0 77 8-9,");
        row("schedule of no drive", "disk=2!0!99!2!0!0", "0 0 77 8-9,");
        row("schedule of five fields", "disk=0!0!99!2!0", "0 0 77 8-9,");
        row("last range not ended", "scan=1;0;10;0;9;260304050607;1-2,3-4", "0 0 10 1-2,3-4,");
        row("items that are no range", "scan=1;0;10;0;9;260304050607;,,1-2,5,1-2-3,,6-7,", "0 0 10 1-2,6-7,");
        row("an eighth field drops the ranges", "scan=1;0;10;0;9;260304050607;1-2,;", "0 0 10 ");
        row("two fields", "scan=1;0", "0 0 0 ");
        row("scan of a negative drive", "scan=-1;0;10;0;9;260304050607;1-2,", "0 0 77 8-9,");
        row("scan of no drive", "scan=2;0;10;0;9;260304050607;1-2,", "0 0 77 8-9,");
    }

    void driveLine()
    {
        QFETCH(QString, line);
        DeviceList devices = twoDrives();
        readDriveState(fileOf("scan=1;0;77;0;9;260304050607;8-9,\n" + line), devices, kNow);
        QString state = QString("%1 %2 %3 ")
                            .arg(int(devices[0].schedule.kind))
                            .arg(int(devices[1].schedule.kind))
                            .arg(devices[1].scan.percent);
        for (const SectorRange &range : devices[1].scan.badRanges)
            state += QString("%1-%2,").arg(range.first).arg(range.last);
        QTEST(state, "state");
    }

    void scheduleWithoutItsDateKeepsItsTime()
    {
#ifndef Q_OS_WIN
        qputenv("TZ", "JST-9"); // 1970 begins before the epoch in this zone; Windows keeps its own zone
#endif
        DeviceList devices = twoDrives();
        devices[0].schedule.kind = ScheduleKind::Daily;
        devices[0].schedule.time = QTime(3, 30, 0); // a daily schedule, without a date
        readDriveState(fileOf(written(Settings(), devices)), devices, kNow);
        QCOMPARE(devices[0].schedule.time, QTime(3, 30, 0));
    }

    /// The time of the daily schedule does not exist on the day of writing: the clock skips it.
    void scheduleInASkippedHourKeepsItsTime()
    {
        qputenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3");
        const QDateTime skipped(QDate(2026, 3, 29), QTime(2, 30));
        if (QDateTime::fromSecsSinceEpoch(skipped.toSecsSinceEpoch()).time() == QTime(2, 30))
            QSKIP("this system keeps its own time zone");
        DeviceList devices = twoDrives();
        devices[0].schedule.kind = ScheduleKind::Daily;
        devices[0].schedule.date = skipped.date();
        devices[0].schedule.time = QTime(2, 30);
        for (int restart = 0; restart < 2; ++restart) {
            readDriveState(fileOf(written(Settings(), devices)), devices, kNow);
            QCOMPARE(devices[0].schedule.time, QTime(2, 30));
        }
    }

    void badRangesAreCapped()
    {
        QString line = "scan=0;0;1;0;0;260304050607;";
        for (int i = 0; i < kMaxBadRanges + 5; ++i)
            line += QString("%1-%1,").arg(i);
        DeviceList devices = twoDrives();
        readDriveState(fileOf({line}), devices, kNow);
        QCOMPARE(devices[0].scan.badRanges.size(), kMaxBadRanges);
    }
};

QTEST_APPLESS_MAIN(TestSettingsFile)
#include "tst_settings_file.moc"
