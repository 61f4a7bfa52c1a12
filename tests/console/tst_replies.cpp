// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/greeting.h"
#include "console/client/history.h"
#include "console/client/inventory.h"
#include "console/client/scans.h"
#include "console/client/short_replies.h"
#include "console/scripted_service.h"

#include <QTest>

#include <functional>

namespace {

const QString kDrive = QStringLiteral(
    "WDC WD10EZEX-00BN5A0~;WD-1~;01.01A01~;1000204886016~;1020~;ATA8-ACS~;1~;121601~;255~;63~;512~;130~;123~;"
    "3~;18~;2~;1~;1~;20123~;20100~;1~;34~;1~;92~;1");

} // namespace

using Fits = std::function<bool(const QString &reply)>;
Q_DECLARE_METATYPE(Fits)

class TestReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void greeting()
    {
        const auto greeting = client::parseGreeting(QStringLiteral(
            "VER]![Halvex Service v 5.0.5]![5001]![60000]![120000]![box]![3]![1]![0]![1]![f]![t]![s]!["
            "h]![2525]![1]![u]![p]![50]![60]![2130706433.1794873600]![warn]![crit"));
        QVERIFY(greeting);
        QCOMPARE(greeting->version, QStringLiteral("Halvex Service v 5.0.5"));
        QCOMPARE(greeting->hostName, QStringLiteral("box"));
        QCOMPARE(greeting->alertLevel, 3);
        QCOMPARE(greeting->peer, QStringLiteral("2130706433"));
        QCOMPARE(greeting->time.toSecsSinceEpoch(), qint64(1794873600));
        const client::ServiceSettings &settings = greeting->settings;
        QCOMPARE(settings.port, 5001);
        QCOMPARE(settings.smartPollInterval, qint64(60000));
        QCOMPARE(settings.freeSpacePollInterval, qint64(120000));
        QVERIFY(settings.popupNotify && !settings.emailNotify && settings.logSysEvLog &&
                settings.smtpNeedAuth);
        const QStringList texts{settings.smtpFrom,    settings.smtpTo,     settings.smtpSubj,
                                settings.smtpServer,  settings.smtpUser,   settings.smtpPass,
                                settings.warnExtTask, settings.critExtTask};
        QCOMPARE(texts.join(QLatin1Char(' ')), QStringLiteral("f t s h u p warn crit"));
        QCOMPARE(settings.smtpPort, 2525);
        QCOMPARE(settings.wTemp, 50);
        QCOMPARE(settings.cTemp, 60);
    }

    void drive()
    {
        const QString unrated =
            QStringLiteral("X~;~;~;0~;-1~;~;-1~;0~;0~;0~;512~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;3~;0~;1");
        const auto drives = client::parseAllDrives(QStringLiteral("ALLDEVINFO_OK]![") + kDrive +
                                                   QStringLiteral("]~[") + unrated);
        QVERIFY(drives);
        QCOMPARE(drives->size(), 2);
        const client::Drive &drive = drives->first();
        QCOMPARE(drive.model, QStringLiteral("WDC WD10EZEX-00BN5A0"));
        QCOMPARE(drive.serial, QStringLiteral("WD-1"));
        QCOMPARE(drive.firmware, QStringLiteral("01.01A01"));
        QCOMPARE(drive.capacity, quint64(1000204886016));
        QCOMPARE(drive.ataMajor, 1020);
        QCOMPARE(drive.ataVersion, QStringLiteral("ATA8-ACS"));
        QCOMPARE(drive.cylinders, qint64(121601));
        QCOMPARE(drive.tracksPerCylinder, 255U);
        QCOMPARE(drive.sectorsPerTrack, 63U);
        QCOMPARE(drive.offlineStatus, 130);
        QCOMPARE(drive.offlineCapability, 123);
        QCOMPARE(drive.smartCapability, 3);
        QCOMPARE(drive.attributeCount, 18);
        QCOMPARE(drive.volumeCount, 2);
        QVERIFY(drive.lifeTimeDetected);
        QCOMPARE(drive.powerOnRaw, qint64(20123));
        QCOMPARE(drive.powerOnRawLast, qint64(20100));
        QVERIFY(drive.hasTemperature);
        QCOMPARE(drive.temperature, 34);
        QCOMPARE(drive.statusLevel, 1);
        QCOMPARE(drive.health, 92);
        QVERIFY(drive.isRated());
        QVERIFY(!drives->last().isRated()); // never read: its level 3 is where every drive starts

        QCOMPARE(client::parseDrive(QStringLiteral("DEVINFO_OK,4,") + kDrive, 4)->health, 92);
        QVERIFY(client::parseAllDrives(QStringLiteral("ALLDEVINFO_OK]![0"))->isEmpty());
    }

    void volumes()
    {
        const auto volumes = client::parseAllVolumes(
            QStringLiteral("ALLVOLINFO_OK]![0~;C:\\~;System~;NTFS~;1234-5678~;"
                           "500000000000~;120000000000]~[2~;1:\\~;~;Unknown~;~;0~;0"));
        QVERIFY(volumes);
        QCOMPARE(volumes->size(), 2);
        const client::Volume &volume = volumes->first();
        QCOMPARE(
            QStringList({volume.root, volume.label, volume.fileSystem, volume.serial}).join(QLatin1Char(' ')),
            QStringLiteral("C:\\ System NTFS 1234-5678"));
        QCOMPARE(volume.totalBytes, quint64(500000000000));
        QCOMPARE(volume.freeBytes, quint64(120000000000));
        QCOMPARE(volumes->last().drive, 2);
        QVERIFY(client::parseAllVolumes(QStringLiteral("ALLVOLINFO_OK]!["))->isEmpty());
    }

    void attributes()
    {
        const auto attributes = client::parseAttributes(
            QStringLiteral("SMARTINFO_OK,1,{5~0~1~10~7~9~36;194~1~0~3~281474976710655~2~0}"), 1);
        QVERIFY(attributes);
        QCOMPARE(attributes->size(), 2);
        const client::Attribute &first = attributes->first();
        QCOMPARE(first.id, 5U);
        QVERIFY(first.isPrefailure && first.flagBit2 && first.isFailing());
        QCOMPARE(first.current, 10U);
        QCOMPARE(first.raw, qint64(7));
        QCOMPARE(first.worst, 9U);
        QCOMPARE(first.threshold, 36U);
        QCOMPARE(attributes->last().raw, qint64(281474976710655));
        QVERIFY(!attributes->last().isFailing()); // low, but no pre-failure attribute
        QVERIFY(client::parseAttributes(QStringLiteral("SMARTINFO_OK,1,{}"), 1)->isEmpty());
    }

    void scanStatus()
    {
        const auto list = client::parseScanStatus(QStringLiteral(
            "STATSCAN]![0;1;50;100;200;261115003607;128-255,300-300|1;2;0;0;0;|2;0;0;0;-1;800101000000"));
        QVERIFY(list);
        QCOMPARE(list->size(), 3);
        const client::ScanStatus &running = list->first();
        QCOMPARE(running.state, client::ScanState::Running);
        QCOMPARE(running.percent, 50);
        QCOMPARE(running.firstSector, quint64(100));
        QCOMPARE(running.currentSector, quint64(200));
        QCOMPARE(running.time, QDateTime(QDate(2026, 11, 15), QTime(0, 36, 7)));
        QCOMPARE(running.badRanges.size(), 2);
        QCOMPARE(running.badRanges.first().last, quint64(255));
        QCOMPARE(list->at(1).state, client::ScanState::Failed);
        QVERIFY(!list->at(1).time.isValid());
        QCOMPARE(list->at(2).currentSector, quint64(0));
        QVERIFY(client::parseScanStatus(QStringLiteral("STATSCAN]!["))->isEmpty());
    }

    void schedule()
    {
        const auto list = client::parseSchedule(QStringLiteral(
            "SCANSCHED]![0~;3~;6~;261115~;033000]![1~;0~;0~;~;]![2~;1~;0~;260230~;000000]![3~;4~;0~;~;"));
        QVERIFY(list);
        QCOMPARE(list->size(), 4);
        QCOMPARE(list->first().kind, client::ScheduleKind::Weekly);
        QCOMPARE(list->first().weekday, 6);
        QCOMPARE(list->first().date, QDate(2026, 11, 15));
        QCOMPARE(list->first().time, QTime(3, 30));
        QVERIFY(!list->at(1).time.isValid());
        QVERIFY(!list->at(2).date.isValid()); // the 30th of February
        QCOMPARE(list->at(3).kind, client::ScheduleKind::Unknown);
        QVERIFY(client::parseSchedule(QStringLiteral("SCANSCHED"))->isEmpty());
    }

    void history()
    {
        // 2026-11-15 00:36:07, drive 0 at 41 degrees.
        const QString known = QString::fromLatin1("\x3b\x2c\x30\x21\x45\x28\x21\x4a");
        const QString lost = known.left(6) + QLatin1Char('"') + QChar(QChar::ReplacementCharacter);
        const QString damaged = QString::fromLatin1("!!!!!!!!");
        const auto history = client::parseHistory(QStringLiteral("STATD]![") + known + damaged + lost);
        QVERIFY(history);
        QCOMPARE(history->damaged, 1);
        QCOMPARE(history->records.size(), 2);
        QCOMPARE(history->records.first().time, QDateTime(QDate(2026, 11, 15), QTime(0, 36, 7)));
        QCOMPARE(history->records.first().drive, 0);
        QCOMPARE(history->records.first().temperature, std::optional<qint32>(41));
        QCOMPARE(history->records.last().drive, 1);
        QVERIFY(!history->records.last().temperature);
    }

    void user()
    {
        const auto user = client::parseUser(QStringLiteral("USERINFO,1,Smith, John,Admin"), 1);
        QVERIFY(user);
        QCOMPARE(user->name, QStringLiteral("Smith, John"));
        QCOMPARE(user->level, QStringLiteral("Admin"));
        QVERIFY(client::parseUser(QStringLiteral("USERINFO,9,"), 9)->name.isEmpty());
    }

    void refusesWhatDoesNotFit_data()
    {
        QTest::addColumn<Fits>("fits");
        QTest::addColumn<QString>("reply");
        const auto row = [](const char *name, auto parse, const QString &reply) {
            QTest::newRow(name) << Fits([parse](const QString &text) { return parse(text).has_value(); })
                                << reply;
        };
        const auto driveReply = [](const QString &from, const QString &to) {
            return QStringLiteral("ALLDEVINFO_OK]![") + QString(kDrive).replace(from, to);
        };
        row("drive: number padded", client::parseAllDrives,
            driveReply(QStringLiteral("~;34~;"), QStringLiteral("~;034~;")));
        row("drive: number signed", client::parseAllDrives,
            driveReply(QStringLiteral("~;34~;"), QStringLiteral("~;+34~;")));
        row("drive: number blank", client::parseAllDrives,
            driveReply(QStringLiteral("~;34~;"), QStringLiteral("~; 34~;")));
        row("drive: too large", client::parseAllDrives,
            driveReply(QStringLiteral("~;34~;"), QStringLiteral("~;2147483648~;")));
        row("drive: negative capacity", client::parseAllDrives,
            driveReply(QStringLiteral("~;1000204886016~;"), QStringLiteral("~;-1~;")));
        row("drive: level 4", client::parseAllDrives,
            driveReply(QStringLiteral("~;1~;92~;"), QStringLiteral("~;4~;92~;")));
        row("drive: separator in a text", client::parseAllDrives,
            driveReply(QStringLiteral("WD-1"), QStringLiteral("W~;D")));
        row("drive: cut", client::parseAllDrives, QStringLiteral("ALLDEVINFO_OK]![") + kDrive.left(120));
        row("drive: nothing", client::parseAllDrives, QStringLiteral("ALLDEVINFO_OK]!["));
        const auto attributes = [](const QString &reply) { return client::parseAttributes(reply, 0); };
        row("attributes: no brace", attributes, QStringLiteral("SMARTINFO_OK,0,{5~0~1~10~7~9~36"));
        row("attributes: current 256", attributes, QStringLiteral("SMARTINFO_OK,0,{5~0~1~256~7~9~36}"));
        row("attributes: field too many", attributes, QStringLiteral("SMARTINFO_OK,0,{5~0~1~10~7~9~36~1}"));
        row("attributes: another drive", attributes, QStringLiteral("SMARTINFO_OK,1,{}"));
        row("scan: state 3", client::parseScanStatus, QStringLiteral("STATSCAN]![0;3;0;0;0;261115003607"));
        row("scan: range backwards", client::parseScanStatus,
            QStringLiteral("STATSCAN]![0;0;0;0;0;261115003607;9-1"));
        row("scan: 13th month", client::parseScanStatus, QStringLiteral("STATSCAN]![0;0;0;0;0;261315003607"));
        row("schedule: short date", client::parseSchedule,
            QStringLiteral("SCANSCHED]![0~;1~;0~;26111~;033000"));
        row("history: half a record", client::parseHistory, QStringLiteral("STATD]![abcd"));
        row(
            "user: no level", [](const QString &reply) { return client::parseUser(reply, 0); },
            QStringLiteral("USERINFO,0,Operator"));
        row("count: negative", client::parseDriveCount, QStringLiteral("DEVCOUNT,-1"));
        row("rights: no time", client::parseRights, QStringLiteral("AUTH,111,Local"));
        const auto greetingWith = [](const QString &from, const QString &to) {
            return ScriptedService::greeting().replace(from, to);
        };
        row("greeting: a separator in a text", client::parseGreeting,
            greetingWith(QStringLiteral("Drives"), QStringLiteral("a]![b")));
        row("greeting: flag 2", client::parseGreeting,
            greetingWith(QStringLiteral("[1]![1]![0]"), QStringLiteral("[1]![2]![0]")));
        row("greeting: no peer", client::parseGreeting,
            greetingWith(QStringLiteral("Local."), QStringLiteral("%6.")));
    }

    void refusesWhatDoesNotFit()
    {
        QFETCH(Fits, fits);
        QFETCH(QString, reply);
        QVERIFY(!fits(reply));
    }
};

QTEST_APPLESS_MAIN(TestReplies)
#include "tst_replies.moc"
