// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/reply_text.h"

#include "protocol/greeting.h"
#include "rows.h"

#include <QHostInfo>
#include <QtTest>

#include <limits>

namespace {

constexpr quint64 kHugest = std::numeric_limits<quint64>::max();
constexpr quint64 kNegativeRaw = quint64(-2); ///< payloads show raw values as signed

DeviceRecord neverRead()
{
    DeviceRecord device;
    device.scan = {false, 12, 63, 9000000000, QDateTime(QDate(2026, 11, 5), QTime(9, 8, 7)), {}};
    return device;
}

/// Returns a drive whose fields differ where the drive in docs/protocol.md has equal or missing values.
DeviceRecord fullDevice()
{
    const VolumeEntry volumeC{3, {}, "C:\\", "%1", {}, "1-A", 4, kHugest, 120};
    const VolumeEntry volumeD{4, {}, "D:\\", {}, "NTFS", {}, 4, 0, 0};
    DeviceRecord device = neverRead();
    device.model = "Model";
    device.capacity = kHugest;
    device.ataMajor = -3;
    device.ataVersion = "ATA8";
    device.smart.fullRead = FullRead::Attributes;
    device.cylinders = -9000000000LL;
    device.smart.offlineStatus = 130;
    device.smart.attributeCount = 5;
    device.smart.attributes = {{9, {}, {}, 4711, 100, 99, 6, 0, 7, 0, 1},
                               {194, {}, {}, kNegativeRaw, 40, 39, 5, 0, 2, 1, 0}};
    device.volumes = {volumeC, volumeD};
    device.smart.powerOn = {4711, PowerOnCounter::Unit::Seconds, true};
    device.smart.powerOnRawLast = kNegativeRaw;
    device.smart.hasTemperature = true;
    device.smart.temperature = -5;
    device.rating = {level::kWarning, 97};
    device.monitored = 257;
    device.scan.hasOpenFailed = true;
    device.scan.badRanges = {{0, 127}, {256, 9000000000}};
    device.schedule = {ScheduleKind::Weekly, 6, QDate(2009, 2, 1), QTime(23, 0, 5)};
    return device;
}

/// Two devices; the second has two attributes and two volumes.
void fill(FakeTarget &target)
{
    target.deviceList = {neverRead(), fullDevice()};
    target.accountList = {{"Operator", 2}, {"Visitor", 0}, {"Smith, J.", 1}, {"Robot", 3}};
    target.runningScan = 0;
}

/// A target whose scan ends during isScanRunning().
class EndingScanTarget : public FakeTarget
{
public:
    [[nodiscard]] bool isScanRunning(int /*device*/) const override { return m_hasEnded = true; }
    void publishScanProgress() override { deviceList[0].scan.percent = m_hasEnded ? 100 : 99; }

private:
    mutable bool m_hasEnded = false;
};

const QString kSchedules = "SCANSCHED]![0~;0~;0~;~;]![1~;3~;6~;090201~;230005";

} // namespace

/// Replies that docs/protocol.md does not show; its examples have a test of their own.
class TestDispatcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void inventory_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QString>("reply");
        const QString bare = "~;~;~;0~;-1~;~;-1~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;3~;0~;1";
        const QString full = "Model~;~;~;18446744073709551615~;-3~;ATA8~;1~;-9000000000~;0~;0~;0~;130~;"
                             "0~;0~;5~;2~;1~;4~;4711~;-2~;1~;-5~;2~;97~;1";
        const QString volumeC = "C:\\~;%1~;~;1-A~;18446744073709551615~;120";
        const QString volumeD = "D:\\~;~;NTFS~;~;0~;0";
        row("device without index", "DEVINFO", "DEVINFO_OK,0," + bare);
        row("device by a number too large", "DEVINFO]![4294967297", "DEVINFO_OK,0," + bare);
        row("device by number", "DEVINFO]![01", "DEVINFO_OK,1," + full);
        row("device beyond the last", "DEVINFO]![02", "DEVINFO_ERR,[2]");
        row("all devices", "ALLDEVINFO", QString("ALLDEVINFO_OK]![%1]~[%2").arg(bare, full));
        row("volume of a device", "VOLINFO]![1]![1", "VOLINFO_OK,1,1," + volumeD);
        row("negative volume", "VOLINFO]![1]![-1", "VOLINFO_ERR,[1,-1]");
        row("volume of no device", "VOLINFO]![2]![0", "VOLINFO_ERR,[2]");
        row("all volumes", "ALLVOLINFO", "ALLVOLINFO_OK]![1~;" + volumeC + "]~[1~;" + volumeD);
        row("attributes of a device", "SMARTINFO]![1",
            "SMARTINFO_OK,1,{9~0~1~100~4711~99~6;194~1~0~40~-2~39~5}");
        row("S.M.A.R.T. values", "SMARTVALUE]![1", "SMARTVALUE_OK,1,{9~;100194~;4}");
        row("S.M.A.R.T. values of none", "SMARTVALUE]![0", "SMARTVALUE_OK,0,{}");
        row("S.M.A.R.T. values beyond", "SMARTVALUE]![2", "SMARTVALUE_ERR,[2]");
        row("S.M.A.R.T. of all", "ALLSMARTINFO",
            "ALLSMARTINFO_OK]![1~;9~;7~;0~;1~;0~;100~;4711~;99~;6]~[1~;194~;2~;1~;0~;0~;40~;-2~;39~;5");
        row("schedules of all devices", "GETSCANSCHED", kSchedules);
        row("scan status", "GSTATSCAN",
            "STATSCAN]![0;1;12;63;9000000000;261105090807|"
            "1;2;12;63;9000000000;261105090807;0-127,256-9000000000");
    }

    void inventory()
    {
        QFETCH(QString, request);
        FakeTarget target;
        fill(target);
        QTEST(replyTo(request, target), "reply");
    }

    void requests_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QString>("calls");
        const QString unknown = "UNKNOWN COMMAND - Command list:";

        row("text of a line not unscrambled", "~ERR", "ERR", "");
        row("empty line", "", unknown, "");
        row("command followed by a blank", "DIS ", unknown, "");
        row("further fields", "DEVCOUNT]![ignored", "DEVCOUNT,2", "");
        row("version", "VER",
            "VER]![Halvex Service v 5.0.5]![5000]![180000]![300000]![" + QHostInfo::localHostName(), "");

        row("user without index", "USERINFO", "USERINFO,0,Operator,Admin", "");
        row("account level guest", "USERINFO]![1", "USERINFO,1,Visitor,Guest", "");
        row("account level user", "USERINFO]![2", "USERINFO,2,Smith, J.,User", "");
        row("unknown account level", "USERINFO]![3", "USERINFO,3,Robot,Unknown", "");
        row("no such user", "USERINFO]![4", "USERINFO,4,", "");

        row("intervals", "SETTIME]![1]![1", "SETTIME_OK,1,1", "");
        row("second interval is 0", "SETTIME]![5]![0", "SETTIME_ERR,180000,300000", "");
        row("second interval is missing", "SETTIME]![5", "SETTIME_ERR,180000,300000", "");
        row("interval beyond 32 bits", "SETTIME]![5]![2147483648", "SETTIME_ERR,180000,300000", "");

        row("temperatures", "GSTATD]![261115110000]![261115113000", "STATD]![;,0,!!!b;,0-!!!c", "");
        row("temperatures without period", "GSTATR", "STATR]![;,0+!!!a", "");

        row("SET without list", "SET", unknown, "");
        row("SMTPTEST of one item", "SMTPTEST]![25", unknown, "");
        row("SETSCANSCHED without schedule", "SETSCANSCHED", unknown, "");
        row("STARTSCAN with four fields", "STARTSCAN]![0]![512]![0", unknown, "");

        row("reset", "RESET", "RESET_OK", "reset");
        row("refresh", "REFRESH", "REFRESH_OK", "refresh");
        row("new schedule", "SETSCANSCHED]![1~;3~;6~;090201230005~;", kSchedules, "changeSchedule");
        row("schedule of four items", "SETSCANSCHED]![1~;1~;6~;090201230005", kSchedules, "");
        row("scan", "STARTSCAN]![1]![65536]![9000000000]![9000000001", "STARTEDSCAN]![1",
            "startScan 1 65536 9000000000 9000000001");
        row("scan of no numbers", "STARTSCAN]![ x]![]![a]![b", "STARTEDSCAN]![ x", "startScan 0 0 0 0");
        row("stop", "STOPSCAN]![01", "STOPEDSCAN]![01", "stopScan 1");
    }

    void requests()
    {
        QFETCH(QString, request);
        FakeTarget target;
        fill(target);
        target.setTemperatures(";,0+!!!a;,0,!!!b;,0-!!!c");
        QTEST(replyTo(request, target), "reply");
        QTEST(target.calls.join(QLatin1Char('|')), "calls");
    }

    /// A text is cached until the attributes change.
    void changedAttributes()
    {
        FakeTarget target;
        fill(target);
        Dispatcher dispatcher(target);
        const auto ask = [&dispatcher] {
            return dispatcher.answer(scramble("ALLSMARTINFO", 7), {}).source->next(1000);
        };
        const QByteArray before = ask();
        QCOMPARE(ask(), before);
        target.deviceList[1].smart.attributes[0].raw = 4712;
        QCOMPARE(ask(), QByteArray(before).replace("4711", "4712"));
        target.deviceList.removeFirst();
        QVERIFY(ask().startsWith("ALLSMARTINFO_OK]![0~;9~;"));
    }

    void manyBadRanges()
    {
        FakeTarget target;
        fill(target);
        QString ranges;
        target.deviceList[1].scan.badRanges.clear();
        for (quint64 first = 0; first < 2000000; first += 1000) {
            target.deviceList[1].scan.badRanges.append({first, first + 9});
            ranges += QString(",%1-%2").arg(first).arg(first + 9);
        }
        const QString reply = replyTo("GSTATSCAN", target);
        QCOMPARE(reply.section(u';', -1), ranges.mid(1));
    }

    void showsTheEndOfAnEndedScan()
    {
        EndingScanTarget target;
        fill(target);
        QVERIFY(replyTo("GSTATSCAN", target).contains("![0;1;100;"));
    }

    void withoutDevices_data()
    {
        QTest::addColumn<QString>("reply");
        row("ALLDEVINFO", "ALLDEVINFO_OK]![0");
        row("ALLVOLINFO", "ALLVOLINFO_OK]![0");
        row("ALLSMARTINFO", "ALLSMARTINFO_OK]![0");
        row("DEVINFO", "DEVINFO_ERR,[0]");
        row("GETSCANSCHED", "SCANSCHED");
        row("GSTATSCAN", "STATSCAN]![");
    }

    void withoutDevices()
    {
        FakeTarget target;
        QTEST(replyTo(QLatin1String(QTest::currentDataTag()), target), "reply");
    }

    void settings_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("greeted");
        QTest::addColumn<QString>("calls");
        row("every item",
            "5000~;60000000000~;70000000000~;0~;2~;-1~;f~;t~;s~;srv~;1~;u~;p~;26~;50~;60~;w~;c~;ignored",
            "[5000]![60000000000]![70000000000]![host]![3]![0]![1]![1]![f]![t]![s]![srv]![26]![1]![u]![p]!"
            "[50]![60]![42.1700000000]![w]![c",
            "changeSettings");
        row("another port", "5001~;1~;1~;1~;0~;0~;~;~;~;~;0~;~;~;25~;55~;65~;~;",
            "[5001]![1]![1]![host]![3]![1]![0]![0]![]![]![]![]![25]![0]![]![]![55]![65]![42.1700000000]![]![",
            "changeSettings");
        row("seventeen items", "7~;1~;1~;1~;1~;1~;f~;t~;s~;srv~;1~;u~;p~;26~;50~;60~;w",
            "[5000]![180000]![300000]![host]![3]![1]![0]![0]![]![]![]![]![25]![0]![]![]![55]![65]!"
            "[42.1700000000]![]![",
            "");
        row("a later placeholder", "5000~;1~;1~;1~;0~;0~;f~;t~;<%22>~;srv~;0~;u~;p~;25~;55~;65~;w~;c",
            "[5000]![1]![1]![host]![3]![1]![0]![0]![f]![t]![<w>]![srv]![25]![0]![u]![p]![55]![65]!"
            "[42.1700000000]![w]![c",
            "changeSettings");
        // The earlier number takes the next field, and every following field moves up by one place.
        row("an earlier placeholder", "5000~;1~;1~;1~;0~;0~;<%3>~;t~;s~;srv~;0~;u~;p~;25~;55~;65~;w~;c",
            "[5000]![1]![1]![host]![3]![1]![0]![0]![<t>]![s]![srv]![25]![0]![u]![p]![55]![65]![w]!"
            "[42.1700000000]![c]![%23",
            "changeSettings");
    }

    /// The greeting shows all settings of SET.
    void settings()
    {
        QFETCH(QString, list);
        QFETCH(QString, greeted);
        FakeTarget target;
        target.settingsRecord.alertLevel = 3;
        QCOMPARE(replyTo("SET]![" + list, target), "SET_OK");
        QCOMPARE(greeting(target.settingsRecord, "host", "42", 1700000000),
                 "VER]![Halvex Service v 5.0.5]!" + greeted);
        QTEST(target.calls.join(QLatin1Char('|')), "calls");
    }
};

QTEST_GUILESS_MAIN(TestDispatcher)
#include "tst_dispatcher.moc"
