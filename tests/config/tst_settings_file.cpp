// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings_file.h"
#include "rows.h"

#include <QtTest>

Q_DECLARE_METATYPE(SectorRange)

namespace {

QByteArray fileOf(const QStringList &lines)
{
    QByteArray file;
    for (const QString &line : lines)
        file += scramble(line, 7) + '\n';
    return file;
}

QStringList linesOf(const QByteArray &file)
{
    QStringList lines;
    for (const QByteArray &line : file.split('\n'))
        lines.append(line.isEmpty() ? QString() : unscramble(line));
    return lines;
}

/// The settings as the file has them, so that one comparison shows every field that changed.
QStringList plainLines(const Settings &settings)
{
    return linesOf(settingsFileText(settings, {}, [] { return 0; }));
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
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("written"); // what the line's key then has; empty: every field as it was
        row("flag on", "emailNotify=1", "emailNotify=1");
        row("flag off", "popupNotify=0", "popupNotify=0");
        row("flag of two", "emailNotify=2", "");
        row("flag below zero", "popupNotify=-1", "");
        row("flag that is no number", "popupNotify=yes", "popupNotify=0");
        row("hottest limit", "cTemp=99", "cTemp=99");
        row("limit too hot", "cTemp=100", "");
        row("coldest limit", "wTemp=1", "wTemp=1");
        row("limit too cold", "wTemp=0", "");
        row("highest port", "smtpPort=99999", "smtpPort=99999");
        row("port too high", "smtpPort=100000", "");
        row("port zero", "smtpPort=0", "");
        row("port beyond all integers", "smtpPort=99999999999", "");
        row("text keeps its blanks", "smtpSubj= hot disk ", "smtpSubj= hot disk ");
        row("text beyond 8 bits", u8"smtpSubj=\u0394\u2603", u8"smtpSubj=\u0394\u2603");
        row("key not at the start", "xsmtpUser=me", "smtpUser=xme");
        row("key twice", "smtpUser=a smtpUser=b", "smtpUser=a b");
        // cTemp= is looked for first and goes, though its value is no number then.
        row("key within a text", "smtpSubj=at cTemp=70", "smtpSubj=at 70");
        row("key in capitals", "CTEMP=70", "");
        row("key without its sign", "cTemp 70", "");
        row("line of a drive", "disk=0!0!99!1!0!0", "");
    }

    void settingsLine()
    {
        QFETCH(QString, line);
        QFETCH(QString, written);
        QStringList expected = plainLines(Settings());
        const QString key = written.left(written.indexOf(u'=') + 1);
        for (QString &text : expected) {
            if (!key.isEmpty() && text.startsWith(key))
                text = written;
        }
        Settings settings;
        readSettingsLines(fileOf({line}), settings);
        QCOMPARE(plainLines(settings), expected);
    }

    void laterLineWins()
    {
        Settings settings;
        // The last line lacks its line feed; the one before it is out of range.
        readSettingsLines(fileOf({QStringLiteral("cTemp=70"), QStringLiteral("cTemp=0")}) +
                              scramble(QStringLiteral("wTemp=40"), 0),
                          settings);
        QCOMPARE(settings.cTemp, 70);
        QCOMPARE(settings.wTemp, 40);
    }

    void writtenLines()
    {
        Settings settings;
        settings.smtpPass = QStringLiteral("%1!");
        DeviceList devices = twoDrives();
        devices[0].schedRange = {0, 1953525167};
        devices[0].schedKind = 3;
        devices[0].schedParam = 6;
        const QDateTime scheduled = QDateTime::fromSecsSinceEpoch(1772600767);
        devices[0].schedDate = scheduled.date();
        devices[0].schedTime = scheduled.time();
        devices[0].scanPercent = 42;
        devices[0].scanFirst = 1;
        devices[0].scanCurrent = 1953525167;
        devices[0].scanTime = QDateTime(QDate(2026, 3, 4), QTime(5, 6, 7));
        devices[0].badRanges = {{128, 255}, {384, 400}};
        const QByteArray expected = "popupNotify=1\n"
                                    "emailNotify=0\n"
                                    "cTemp=65\n"
                                    "wTemp=55\n"
                                    "logSysEvLog=0\n"
                                    "smtpNeedAuth=0\n"
                                    "smtpPort=25\n"
                                    "smtpFrom=\n"
                                    "smtpTo=\n"
                                    "smtpSubj=\n"
                                    "smtpServer=\n"
                                    "smtpUser=\n"
                                    "smtpPass=%1!\n"
                                    "warnExtTask=\n"
                                    "critExtTask=\n"
                                    "disk=0!0!1953525167!3!6!1772600767\n"
                                    "disk=1!0!0!0!0!4294967295\n" // no time, so no moment
                                    "scan=0;0;42;1;1953525167;260304050607;128-255,384-400,\n"
                                    "scan=1;0;0;0;0;;\n";
        const QStringList lines = linesOf(settingsFileText(settings, devices, [] { return 99; }));
        QCOMPARE(lines.join(u'\n').toUtf8(), expected);
    }

    void everySettingComesBack()
    {
        Settings settings;
        settings.cTemp = 61;
        settings.wTemp = 51;
        settings.popupNotify = false;
        settings.emailNotify = true;
        settings.logSysEvLog = true;
        settings.smtpNeedAuth = true;
        settings.smtpFrom = QStringLiteral("from@example.org");
        settings.smtpTo = QStringLiteral("to@example.org");
        settings.smtpSubj = QStringLiteral("subject");
        settings.smtpServer = QStringLiteral("mail.example.org");
        settings.smtpPort = 587;
        settings.smtpUser = QStringLiteral("user");
        settings.smtpPass = QStringLiteral("secret");
        settings.warnExtTask = QStringLiteral("warn.sh");
        settings.critExtTask = QStringLiteral("crit.sh");
        int offset = 0;
        const QByteArray file = settingsFileText(settings, {}, [&offset] { return offset++; });
        Settings read;
        readSettingsLines(file, read);
        QCOMPARE(read.smtpPass, QStringLiteral("secret"));
        QCOMPARE(plainLines(read), plainLines(settings));
        QVERIFY(settingsFileText(settings, {}, [&offset] { return offset++; }) != file);
    }

    void initialDriveState()
    {
        DeviceList devices = twoDrives();
        devices.append(DeviceRecord()); // no capacity
        readDriveState({}, devices, kNow);
        QCOMPARE(devices[0].scanPercent, 0);
        QCOMPARE(devices[0].scanFirst, quint64(0));
        QCOMPARE(devices[0].scanCurrent, quint64(1953525167));
        QCOMPARE(devices[0].scanTime.date(), QDate(1980, 1, 1));
        QCOMPARE(devices[0].schedRange, (SectorRange{0, 1953525167}));
        QCOMPARE(devices[0].schedDate, QDate(2026, 3, 4));
        QCOMPARE(devices[0].schedTime, QTime(5, 6, 7));
        QCOMPARE(devices[0].schedKind, 0);
        QCOMPARE(devices[1].scanCurrent, quint64(7));
        QCOMPARE(devices[2].scanCurrent, quint64(0));
        QCOMPARE(devices[2].schedRange, (SectorRange{0, 0}));
    }

    void diskLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("kind0"); // of the first drive, and of the second
        QTest::addColumn<int>("kind1");
        row("first drive", "disk=0!0!99!2!0!0", 2, 0);
        row("last drive", "disk=1!0!99!3!0!0", 0, 3);
        row("drive that is not there", "disk=2!0!99!2!0!0", 0, 0);
        row("negative drive", "disk=-1!0!99!2!0!0", 0, 0);
        row("five fields", "disk=0!0!99!2!0", 0, 0);
        row("seven fields", "disk=0!0!99!2!0!0!", 0, 0);
        row("key not at the start", "1disk=!0!99!2!0!0", 0, 2);
    }

    void diskLine()
    {
        QFETCH(QString, line);
        DeviceList devices = twoDrives();
        readDriveState(fileOf({line}), devices, kNow);
        QTEST(devices[0].schedKind, "kind0");
        QTEST(devices[1].schedKind, "kind1");
    }

    void scanLine_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("percent"); // of the second drive
        QTest::addColumn<QVector<SectorRange>>("ranges");
        using Ranges = QVector<SectorRange>;
        row("no ranges", "scan=1;0;10;0;9;260304050607;", 10, Ranges{});
        row("two ranges", "scan=1;0;10;0;9;260304050607;1-2,3-4,", 10, Ranges{{1, 2}, {3, 4}});
        row("last range not ended", "scan=1;0;10;0;9;260304050607;1-2,3-4", 10, Ranges{{1, 2}, {3, 4}});
        row("items that are no range", "scan=1;0;10;0;9;260304050607;,,1-2,5,1-2-3,,6-7,", 10,
            Ranges{{1, 2}, {6, 7}});
        row("an eighth field drops the ranges", "scan=1;0;10;0;9;260304050607;1-2,;", 10, Ranges{});
        row("six fields", "scan=1;0;10;0;9;260304050607", 10, Ranges{});
        row("two fields", "scan=1;0", 0, Ranges{});
        row("drive that is not there", "scan=2;0;10;0;9;260304050607;1-2,", 77, Ranges{{8, 9}});
        row("negative drive", "scan=-1;0;10;0;9;260304050607;1-2,", 77, Ranges{{8, 9}});
    }

    void scanLine()
    {
        QFETCH(QString, line);
        QFETCH(QVector<SectorRange>, ranges);
        DeviceList devices = twoDrives();
        readDriveState(fileOf({QStringLiteral("scan=1;0;77;0;9;260304050607;8-9,"), line}), devices, kNow);
        QTEST(devices[1].scanPercent, "percent");
        QCOMPARE(devices[1].badRanges, ranges);
    }

    void driveStateComesBack()
    {
        DeviceList devices = twoDrives();
        DeviceRecord &device = devices[1];
        device.schedRange = {3, 5};
        device.schedKind = 1;
        device.schedParam = 4;
        device.schedDate = QDate(2031, 12, 24);
        device.schedTime = QTime(18, 30, 15);
        device.scanError = 1;
        device.scanPercent = 57;
        device.scanFirst = 1;
        device.scanCurrent = 4;
        device.scanTime = QDateTime(QDate(2026, 2, 28), QTime(23, 59, 58));
        device.badRanges = {{2, 2}};
        const QByteArray file = settingsFileText(Settings(), devices, [] { return 12; });

        DeviceList read = twoDrives();
        read[1].scanError = 1;
        readDriveState(file, read, kNow);
        QCOMPARE(read[1].schedRange, device.schedRange);
        QCOMPARE(read[1].schedKind, 1);
        QCOMPARE(read[1].schedParam, 4);
        QCOMPARE(read[1].schedDate, device.schedDate);
        QCOMPARE(read[1].schedTime, device.schedTime);
        QCOMPARE(read[1].scanError, 0); // a failed scan does not outlive the service
        QCOMPARE(read[1].scanPercent, 57);
        QCOMPARE(read[1].scanFirst, quint64(1));
        QCOMPARE(read[1].scanCurrent, quint64(4));
        QCOMPARE(read[1].scanTime, device.scanTime);
        QCOMPARE(read[1].badRanges, device.badRanges);
    }

    void scheduleWithoutItsDateKeepsItsTime()
    {
        DeviceList devices = twoDrives();
        devices[0].schedKind = 2;
        devices[0].schedTime = QTime(3, 30, 0); // a daily schedule; its date is none
        devices[1].schedKind = 2;               // has no time either
        const QByteArray file = settingsFileText(Settings(), devices, [] { return 12; });
        readDriveState(file, devices, kNow);
        QCOMPARE(devices[0].schedTime, QTime(3, 30, 0));
        QVERIFY(!devices[1].schedTime.isValid());
    }

    void bytesThatAreNoFile_data()
    {
        QTest::addColumn<QByteArray>("file");
        row("line feeds", QByteArray(5, '\n'));
        row("zeros without a line end", QByteArray(100000, '\0'));
        row("bytes of the high half", QByteArray(4096, '\xff'));
        row("plain text", QByteArray("emailNotify=1\ncTemp=70\ndisk=0!0!1!2!3!4\n"));
        row("a carriage return too many", scramble(QStringLiteral("cTemp=70"), 3) + "\r\n");
        row("a line cut off", scramble(QStringLiteral("cTemp=70"), 3).chopped(1));
    }

    void bytesThatAreNoFile()
    {
        QFETCH(QByteArray, file);
        Settings settings;
        readSettingsLines(file, settings);
        QCOMPARE(plainLines(settings), plainLines(Settings()));
        DeviceList devices = twoDrives();
        readDriveState(file, devices, kNow);
        QCOMPARE(devices[0].schedKind, 0);
    }

    void badRangesAreCapped()
    {
        QString line = QStringLiteral("scan=0;0;1;0;0;260304050607;");
        for (int i = 0; i < kMaxBadRanges + 5; ++i)
            line += QStringLiteral("%1-%1,").arg(i);
        DeviceList devices = twoDrives();
        readDriveState(fileOf({line}), devices, kNow);
        QCOMPARE(devices[0].badRanges.size(), kMaxBadRanges);
    }
};

QTEST_APPLESS_MAIN(TestSettingsFile)
#include "tst_settings_file.moc"
