// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/greeting.h"
#include "console/client/history.h"
#include "console/client/inventory.h"
#include "console/client/line_reader.h"
#include "console/client/scans.h"
#include "rows.h"

namespace {

/// Values behind each other, as the table has them.
template <typename... Values>
QString text(const Values &...values)
{
    return QStringList{QVariant(values).toString()...}.join(u' ');
}

QString shown(const client::Greeting &g)
{
    const client::ServiceSettings &s = g.settings;
    return text(g.version, s.port, s.smartPollInterval, s.freeSpacePollInterval, g.hostName, g.alertLevel,
                s.popupNotify, s.emailNotify, s.logSysEvLog, s.smtpFrom, s.smtpTo, s.smtpSubj, s.smtpServer,
                s.smtpPort, s.smtpNeedAuth, s.smtpUser, s.smtpPass, s.wTemp, s.cTemp, g.peer,
                g.time.toSecsSinceEpoch(), s.warnExtTask, s.critExtTask);
}

QString shown(const client::Drive &d)
{
    return text(d.model, d.serial, d.firmware, d.capacity, d.ataMajor, d.ataVersion, d.smartState,
                d.cylinders, d.tracksPerCylinder, d.sectorsPerTrack, d.bytesPerSector, d.offlineStatus,
                d.offlineCapability, d.smartCapability, d.attributeCount, d.volumeCount, d.lifeTimeDetected,
                d.lifeTimeUnit, d.powerOnRaw, d.powerOnRawLast, d.hasTemperature, d.temperature,
                d.statusLevel, d.health, d.monitored, d.isRated());
}

QString shown(const client::Volume &v)
{
    return text(v.drive, v.root, v.label, v.fileSystem, v.serial, v.totalBytes, v.freeBytes);
}

QString shown(const client::Attribute &a)
{
    return text(a.id, a.isPrefailure, a.flagBit2, a.current, a.raw, a.worst, a.threshold, a.isFailing());
}

QString shown(const client::ScanStatus &s)
{
    QString all = text(s.drive, int(s.state), s.percent, s.firstSector, s.currentSector, s.time);
    for (const client::BadRange &range : s.badRanges)
        all += u' ' + text(range.first, range.last);
    return all;
}

QString shown(const client::ScheduleEntry &e)
{
    return text(e.drive, int(e.kind), e.weekday, e.date, e.time);
}

QString shown(const client::TemperatureRecord &r)
{
    return text(r.time, r.drive, r.temperature.value_or(-1));
}

template <typename Item>
QString shown(const QVector<Item> &items)
{
    QStringList all;
    for (const Item &item : items)
        all += shown(item);
    return u'[' + all.join(u'|') + u']';
}

QString shown(const client::TemperatureHistory &h)
{
    return shown(h.records) + QStringLiteral(" %1 damaged").arg(h.damaged);
}

/// Of a reply about a number: about 1.
template <typename Value, typename... Number>
QString read(std::optional<Value> (*parse)(const QString &, Number...), const QByteArray &reply)
{
    const std::optional<Value> value = parse(QString::fromUtf8(reply), Number(1)...);
    return value ? shown(*value) : QStringLiteral("refused");
}

/// "VER" is "VkVS" in Base64; with offset 0 all four are combined with the key's first character, 'M'.
const QByteArray kLine = "00000012001b261b1e";

const QByteArray kGreeting =
    "VER]![Halvex Service v 5.0.5]![5001]![60000]![120000]![box]![3]![1]![0]![1]![f]![t]![s]![h]![2525]![0]!["
    "u]![p]![50]![60]![2130706433.1794873600]![warn]![crit";

const QByteArray kDrive =
    "DEVINFO_OK,1,WDC~;WD-1~;01.01A01~;1000204886016~;1020~;ATA8-ACS~;1~;121601~;255~;63~;512~;130~;123~;3~;"
    "18~;2~;1~;4~;20123~;20100~;1~;34~;2~;92~;1";

} // namespace

class TestReplies : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refusesWhatIsNoLine_data()
    {
        QTest::addColumn<QByteArray>("wire");
        row("another protocol", QByteArray("220 mail.example.org"));
        row("announces a gigabyte", QByteArray("40000000"));
        row("ends too early", QByteArray("00000012001b\r\n"));
        row("ends too late", kLine + "00\r\n");
        row("only a line feed", kLine + "\n\n");
        row("no hexadecimal body", QByteArray("00000012001b26zz1e\r\n"));
    }

    void refusesWhatIsNoLine()
    {
        QFETCH(QByteArray, wire);
        client::LineReader reader;
        const QByteArray good = kLine + "\r\n";
        for (const char byte : good) {
            QVERIFY(!reader.takeLine());
            reader.append(QByteArray(1, byte));
        }
        QCOMPARE(client::plainText(*reader.takeLine()).value_or(QString()), QStringLiteral("VER"));
        reader.append(wire);
        const auto line = reader.takeLine();
        QVERIFY(line ? !client::plainText(*line) : reader.isBroken());
    }

    void drives_data()
    {
        QTest::addColumn<QString>("read");
        QTest::addColumn<QString>("expected");
        row("drive", read(client::parseDrive, kDrive),
            "WDC WD-1 01.01A01 1000204886016 1020 ATA8-ACS 1 121601 255 63 512 130 123 3 18 2 true 4 20123 "
            "20100 true 34 2 92 1 true");
        const auto drive = [](const char *from, const char *to) {
            return read(client::parseDrive, QByteArray(kDrive).replace(from, to));
        };
        row("drive: another one", drive("OK,1", "OK,2"), "refused");
        row("drive: too large", drive("34", "2147483648"), "refused");
        row("drive: separator in a text", drive("WD-1", "W~;D"), "refused");
        row("drive: cut", drive("~;92~;1", ""), "refused");

        row("drives: never read",
            read(client::parseAllDrives, "ALLDEVINFO_OK]![X~;~;~;0~;-1~;~;-1~;0~;0~;0~;512~;0~;0~;0~;0~;0~;"
                                         "0~;0~;0~;0~;0~;0~;3~;0~;1"),
            "[X   0 -1  -1 0 0 0 512 0 0 0 0 0 false 0 0 0 false 0 3 0 1 false]");
        row("drives: none", read(client::parseAllDrives, "ALLDEVINFO_OK]![0"), "[]");

        row("volumes",
            read(client::parseAllVolumes, "ALLVOLINFO_OK]![0~;C:\\~;System~;NTFS~;1234-5678~;500~;120]~["
                                          "2~;1:\\~;~;Unknown~;~;18446744073709551615~;0"),
            "[0 C:\\ System NTFS 1234-5678 500 120|2 1:\\  Unknown  18446744073709551615 0]");

        row("attributes",
            read(client::parseAttributes, "SMARTINFO_OK,1,{5~0~1~10~7~9~36;194~1~0~3~281474976710655~2~0}"),
            "[5 true true 10 7 9 36 true|194 false false 3 281474976710655 2 0 false]");
        row("attributes: none", read(client::parseAttributes, "SMARTINFO_OK,1,{}"), "[]");
        const auto attributes = [](const char *payload) {
            return read(client::parseAttributes, QByteArray("SMARTINFO_OK,") + payload);
        };
        row("attributes: another drive", attributes("2,{}"), "refused");
    }

    void drives() { compare(); }

    void others_data()
    {
        QTest::addColumn<QString>("read");
        QTest::addColumn<QString>("expected");
        row("greeting", read(client::parseGreeting, kGreeting),
            "Halvex Service v 5.0.5 5001 60000 120000 box 3 true false true f t s h 2525 false u p 50 60 "
            "2130706433 1794873600 warn crit");
        const auto greeting = [](const char *from, const char *to) {
            return read(client::parseGreeting, QByteArray(kGreeting).replace(from, to));
        };
        row("greeting: a separator in a text", greeting("[s]", "[a]![b]"), "refused");
        row("greeting: no peer", greeting("2130706433.", "%6."), "refused");

        row("scan: running, failed, and of a drive without sectors",
            read(client::parseScanStatus, "STATSCAN]![0;1;50;100;200;261115003607;128-255,300-300|"
                                          "1;2;0;0;0;|2;0;0;0;-1;800101000000"),
            "[0 1 50 100 200 2026-11-15T00:36:07.000 128 255 300 300|1 2 0 0 0 |2 0 0 0 0 ]");
        row("scan: none", read(client::parseScanStatus, "STATSCAN]!["), "[]");
        const auto scan = [](const char *payload) {
            return read(client::parseScanStatus, QByteArray("STATSCAN]![0;") + payload);
        };
        row("scan: range backwards", scan("0;0;0;0;261115003607;9-1"), "refused");

        row("schedule: weekly, none, 30 February, unknown kind",
            read(client::parseSchedule, "SCANSCHED]![0~;3~;6~;261115~;033000]![1~;0~;0~;~;]!["
                                        "2~;1~;0~;260230~;000000]![3~;4~;0~;~;"),
            "[0 3 6 2026-11-15 03:30:00.000|1 0 0  |2 1 0  00:00:00.000|3 4 0  ]");
        row("schedule: no drives", read(client::parseSchedule, "SCANSCHED"), "[]");

        row("history: one temperature lost, one record damaged",
            read(client::parseHistory, "STATD]![;,0!E(!J!!!!!!!!;,0!E(\"\xEF\xBF\xBD"),
            "[2026-11-15T00:36:07.000 0 41|2026-11-15T00:36:07.000 1 -1] 1 damaged");
    }

    void others() { compare(); }

private:
    static void compare()
    {
        QFETCH(QString, read);
        QTEST(read, "expected");
    }
};

QTEST_APPLESS_MAIN(TestReplies)
#include "tst_replies.moc"
