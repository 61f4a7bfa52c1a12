// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/greeting.h"
#include "client/history.h"
#include "client/inventory.h"
#include "client/line_reader.h"
#include "client/scans.h"
#include "client/short_replies.h"
#include "client/units.h"
#include "rows.h"

namespace {

/// "VER" is "VkVS" in Base64; with offset 0 all four characters are combined with the key's first one, 'M'.
const QByteArray kLine = "00000012001b261b1e";

const QString kGreeting = QStringLiteral(
    "VER]![Halvex Service v 5.0.5]![5001]![60000]![120000]![box]![3]![1]![0]![1]![f]![t]![s]![h]![2525]![0]!["
    "u]![p]![50]![60]![2130706433.1794873600]![warn]![crit");

const QString kDrive = QStringLiteral(
    "DEVINFO_OK,1,WDC~;WD-1~;01.01A01~;1000204886016~;10~;ATA8-ACS~;1~;121601~;255~;63~;512~;130~;123~;3~;"
    "18~;2~;1~;2~;20123~;20100~;1~;34~;2~;92~;1");

QDateTime localTime(const char *text)
{
    QDateTime time = QDateTime::fromString(QLatin1String(text), Qt::ISODate);
    time.setTimeSpec(Qt::UTC);
    return time;
}

} // namespace

class TestReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesLine_data()
    {
        QTest::addColumn<QByteArray>("wire");
        row("another protocol", QByteArray("220 mail.example.org"));
        row("length of a gigabyte", QByteArray("40000000"));
        row("shorter than its length", QByteArray("00000012001b\r\n"));
        row("longer than its length", kLine + "00\r\n");
        row("line end without CR", kLine + "\n\n");
        row("body not hexadecimal", QByteArray("00000012001b26zz1e\r\n"));
    }

    void refusesLine()
    {
        QFETCH(QByteArray, wire);
        client::LineReader reader;
        const QByteArray good = kLine + "\r\n";
        for (const char byte : good) {
            QVERIFY(!reader.takeLine());
            reader.append(QByteArray(1, byte));
        }
        QCOMPARE(client::plainText(*reader.takeLine()).value_or(QString()), "VER");
        reader.append(wire);
        const auto line = reader.takeLine();
        QVERIFY(line ? !client::plainText(*line) : reader.isBroken());
    }

    void readsGreeting()
    {
        const auto greeting = client::parseGreeting(kGreeting);
        QVERIFY(greeting.has_value());
        QCOMPARE(greeting->version, "Halvex Service v 5.0.5");
        QCOMPARE(greeting->hostName, "box");
        QCOMPARE(greeting->level, client::Level::Critical);
        QCOMPARE(greeting->peer, "2130706433");
        QCOMPARE(greeting->time.toSecsSinceEpoch(), 1794873600);
        const ServiceSettings &settings = greeting->settings;
        QCOMPARE(settings.port, 5001);
        QCOMPARE(settings.smartPollInterval, 60000);
        QCOMPARE(settings.freeSpacePollInterval, 120000);
        QCOMPARE(settings.popupNotify, true);
        QCOMPARE(settings.emailNotify, false);
        QCOMPARE(settings.logSysEvLog, true);
        QCOMPARE(settings.smtpNeedAuth, false);
        QCOMPARE(settings.smtpPort, 2525);
        QCOMPARE(settings.wTemp, 50);
        QCOMPARE(settings.cTemp, 60);
        const QStringList texts{settings.smtpFrom,    settings.smtpTo,     settings.smtpSubj,
                                settings.smtpServer,  settings.smtpUser,   settings.smtpPass,
                                settings.warnExtTask, settings.critExtTask};
        QCOMPARE(texts.join(u' '), "f t s h u p warn crit");
    }

    void readsDrive()
    {
        const auto drive = client::parseDrive(kDrive, 1);
        QVERIFY(drive.has_value());
        QCOMPARE(drive->number, 1);
        QCOMPARE(drive->model, "WDC");
        QCOMPARE(drive->serial, "WD-1");
        QCOMPARE(drive->firmware, "01.01A01");
        QCOMPARE(drive->capacity, 1000204886016U);
        QCOMPARE(drive->ataMajor, 10);
        QCOMPARE(drive->ataVersion, "ATA8-ACS");
        QCOMPARE(drive->smartState, client::SmartState::Read);
        QCOMPARE(drive->cylinders, 121601);
        QCOMPARE(drive->tracksPerCylinder, 255U);
        QCOMPARE(drive->sectorsPerTrack, 63U);
        QCOMPARE(drive->bytesPerSector, 512U);
        QCOMPARE(drive->offlineStatus, 130);
        QCOMPARE(drive->offlineCapability, 123);
        QCOMPARE(drive->smartCapability, 3);
        QCOMPARE(drive->attributeCount, 18);
        QCOMPARE(drive->volumeCount, 2);
        QVERIFY(drive->powerOn.isMeasured);
        QCOMPARE(drive->powerOn.hours().value_or(-1), 335); // raw value 20123, in minutes
        QCOMPARE(drive->powerOnRawLast, 20100);
        QCOMPARE(drive->temperature.value_or(-1), 34);
        QCOMPARE(drive->level(), client::Level::Warning);
        QCOMPARE(drive->health, 92);
    }

    void readsDriveList()
    {
        const auto drives = client::parseAllDrives(QStringLiteral(
            "ALLDEVINFO_OK]![A~;~;~;0~;-1~;~;-1~;0~;0~;0~;512~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;3~;0~;1"
            "]~[B~;~;~;0~;-1~;~;1~;0~;0~;0~;512~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;3~;0~;0"));
        QCOMPARE(drives.value().size(), 2);
        QCOMPARE(drives->at(1).number, 1);
        QCOMPARE(drives->at(0).level(), client::Level::NotRated); // never read
        QCOMPARE(drives->at(1).level(), client::Level::NotRated); // not monitored
        QVERIFY(!drives->at(0).temperature);
        QVERIFY(!drives->at(0).powerOn.hours());
        QVERIFY(client::parseAllDrives("ALLDEVINFO_OK]![0").value().isEmpty());
    }

    void readsVolumes()
    {
        const auto volumes =
            client::parseAllVolumes("ALLVOLINFO_OK]![0~;C:\\~;System~;NTFS~;1234-5678~;500~;120]~["
                                    "2~;1:\\~;~;Unknown~;~;18446744073709551615~;0");
        QCOMPARE(volumes.value().size(), 2);
        const client::Volume &first = volumes->first();
        QCOMPARE(first.drive, 0);
        QCOMPARE(first.root, "C:\\");
        QCOMPARE(first.label, "System");
        QCOMPARE(first.fileSystem, "NTFS");
        QCOMPARE(first.serial, "1234-5678");
        QCOMPARE(first.totalBytes, 500U);
        QCOMPARE(first.freeBytes, 120U);
        QCOMPARE(volumes->last().totalBytes, ~quint64(0));
    }

    void readsAttributes()
    {
        const auto attributes = client::parseAttributes(
            "SMARTINFO_OK,1,{5~0~1~10~7~9~3;194~1~0~3~281474976710655~2~0;9~0~0~11~1~1~11}", 1);
        QCOMPARE(attributes.value().size(), 3);
        const client::Attribute &first = attributes->first();
        QCOMPARE(first.id, 5U);
        QCOMPARE(first.flagBit2, true);
        QCOMPARE(first.current, 10U);
        QCOMPARE(first.raw, 7);
        QCOMPARE(first.worst, 9U);
        QCOMPARE(first.threshold, 3U);
        QVERIFY(first.isFailing());              // 10, above its threshold
        QVERIFY(!attributes->at(1).isFailing()); // advisory
        QVERIFY(attributes->at(2).isFailing());  // at its threshold
        QVERIFY(client::parseAttributes("SMARTINFO_OK,1,{}", 1).value().isEmpty());
        const auto all = client::parseAllAttributes(QStringLiteral(
            "ALLSMARTINFO_OK]![0~;9~;50~;1~;0~;0~;67~;24619~;66~;1]~[3~;5~;51~;0~;1~;0~;8~;2~;7~;36"));
        QCOMPARE(all.value().size(), 2);
        QCOMPARE(all->last().drive, 3);
        const client::Attribute &last = all->last().attribute;
        QCOMPARE(last.flags, 51U);
        QVERIFY(last.isPrefailure && last.flagBit2);
        QCOMPARE(last.current, 8U);
        QCOMPARE(last.raw, 2);
        QCOMPARE(last.worst, 7U);
        QCOMPARE(last.threshold, 36U);
    }

    void readsScans()
    {
        const auto scans = client::parseScanStatus(QStringLiteral(
            "STATSCAN]![0;1;50;100;200;261115003607;128-255,300-300|1;2;0;0;0;|2;0;0;0;-1;800101000000"));
        QCOMPARE(scans.value().size(), 3);
        const client::ScanStatus &running = scans->first();
        QCOMPARE(running.state, client::ScanState::Running);
        QCOMPARE(running.percent, 50);
        QCOMPARE(running.firstSector, 100U);
        QCOMPARE(running.currentSector, 200U);
        QCOMPARE(running.time, localTime("2026-11-15T00:36:07"));
        QCOMPARE(running.badRanges.size(), 2);
        QCOMPARE(running.badRanges.last().first, 300U);
        QCOMPARE(scans->at(1).state, client::ScanState::Failed);
        QVERIFY(!scans->at(2).hasRun());
        QVERIFY(client::parseScanStatus("STATSCAN]![").value().isEmpty());
    }

    void recognizesCompleteScan_data()
    {
        QTest::addColumn<quint64>("first");
        QTest::addColumn<quint64>("current");
        QTest::addColumn<int>("percent");
        QTest::addColumn<bool>("isComplete");
        row("drive of 80 GB, whose last sector is at 99 % → complete", quint64(0), quint64(156301487), 99,
            true);
        row("drive of 1 TB at 100 % → complete", quint64(0), quint64(1953525167), 100, true);
        row("drive of 1 TB at 99 % → stopped", quint64(0), quint64(1953525166), 99, false);
        row("one sector → complete", quint64(7), quint64(7), 100, true);
        row("stopped at the first sector → stopped", quint64(7), quint64(7), 0, false);
    }

    void recognizesCompleteScan()
    {
        QFETCH(quint64, first);
        QFETCH(quint64, current);
        QFETCH(int, percent);
        client::ScanStatus status;
        status.firstSector = first;
        status.currentSector = current;
        status.percent = percent;
        status.time = localTime("2026-11-15T00:36:07");
        QTEST(status.isComplete(), "isComplete");
    }

    void readsSchedule()
    {
        const auto schedule = client::parseSchedule(
            "SCANSCHED]![0~;3~;6~;261115~;033000]![1~;0~;0~;~;]![2~;1~;0~;260230~;000000]!["
            "3~;4~;0~;~;");
        QCOMPARE(schedule.value().size(), 4);
        const client::ScheduleEntry &weekly = schedule->first();
        QCOMPARE(weekly.kind, client::ScheduleKind::Weekly);
        QCOMPARE(weekly.weekday, 6);
        QCOMPARE(weekly.date, QDate(2026, 11, 15));
        QCOMPARE(weekly.time, QTime(3, 30));
        QCOMPARE(schedule->at(1).kind, client::ScheduleKind::None);
        QVERIFY(!schedule->at(2).date.isValid()); // 30 February
        QCOMPARE(schedule->at(3).kind, client::ScheduleKind::Unknown);
        QVERIFY(client::parseSchedule("SCANSCHED").value().isEmpty());
    }

    void readsHistory()
    {
        const auto history =
            client::parseHistory(QString::fromUtf8("STATD]![;,0!E(!J!!!!!!!!;,0!E(\"\xEF\xBF\xBD"));
        QCOMPARE(history.value().records.size(), 2);
        QCOMPARE(history->damaged, 1);
        QCOMPARE(history->records.first().time, localTime("2026-11-15T00:36:07"));
        QCOMPARE(history->records.first().temperature.value_or(-1), 41);
        QCOMPARE(history->records.last().drive, 1);
        QVERIFY(!history->records.last().temperature); // its character was lost in transit
    }

    void readsServiceTime()
    {
        const auto clock = client::parseServiceTime("X-TIME_OK]![1784084400]![7200]![Europe/Berlin");
        QVERIFY(clock);
        QCOMPARE(client::isoTime(clock->time).toString(), "2026-07-15T05:00:00+02:00");
    }

    void refusesReply_data()
    {
        QTest::addColumn<QString>("reply");
        const auto drive = [](auto from, auto to) { return QString(kDrive).replace(from, to); };
        const auto greeting = [](auto from, auto to) { return QString(kGreeting).replace(from, to); };
        row("drive: another number", drive("OK,1", "OK,2"));
        row("drive: temperature too large", drive("34", "2147483648"));
        row("drive: separator in a text", drive("WD-1", "W~;D"));
        row("drive: fields missing", drive("~;92~;1", ""));
        row("greeting: separator in a text", greeting("[s]", "[a]![b]"));
        row("greeting: no peer", greeting("2130706433.", "%6."));
        row("attributes: another drive", "SMARTINFO_OK,2,{}");
        row("scans: end of a range before its start", "STATSCAN]![0;0;0;0;0;261115003607;9-1");
        row("history: part of a record", "STATD]![;,0!E");
    }

    /// By its own parser, and by those of other replies.
    void refusesReply()
    {
        QFETCH(QString, reply);
        QVERIFY(!client::parseDrive(reply, 1));
        QVERIFY(!client::parseGreeting(reply));
        QVERIFY(!client::parseAttributes(reply, 1));
        QVERIFY(!client::parseScanStatus(reply));
        QVERIFY(!client::parseHistory(reply));
    }
};

QTEST_APPLESS_MAIN(TestReplies)
#include "tst_replies.moc"
