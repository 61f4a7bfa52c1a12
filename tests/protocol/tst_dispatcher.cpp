// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/dispatcher.h"

#include "protocol/fake_target.h"
#include "rows.h"

#include <QHostInfo>
#include <QtTest>

namespace {

/// Two devices; the second has two volumes.
void fill(FakeTarget &target)
{
    DeviceRecord bare;
    bare.scanTime = QDateTime(QDate(2026, 11, 5), QTime(9, 8, 7));
    DeviceRecord withVolumes = bare;
    VolumeEntry volume;
    volume.root = QStringLiteral("C:\\");
    withVolumes.volumes = {volume, volume};
    withVolumes.volumes[1].root = QStringLiteral("D:\\");
    AttributeEntry powerOnTime;
    powerOnTime.id = 9;
    powerOnTime.current = 100;
    withVolumes.attributes = {powerOnTime};
    target.deviceList = {bare, withVolumes};
    target.accountList = {{QStringLiteral("Operator"), 2}};
    target.runningScan = 1;
}

QString replyTo(const QString &request, FakeTarget &target)
{
    const Reply reply = processCommand(request.split(kRequestSeparator), target);
    return reply.rest ? reply.text + reply.rest() : reply.text;
}

/// A target whose scan ends while it is asked whether it runs.
class EndingScanTarget : public FakeTarget
{
public:
    [[nodiscard]] bool isScanRunning(int device) const override
    {
        m_hasEnded = true;
        return device == runningScan;
    }
    const DeviceList &devices() override
    {
        deviceList[1].scanPercent = m_hasEnded ? 100 : 99;
        return deviceList;
    }

private:
    mutable bool m_hasEnded = false;
};

const QString kBareDevice =
    QStringLiteral("~;~;~;0~;-1~;~;-1~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;0~;3~;0~;1");

} // namespace

class TestDispatcher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replies_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QString>("reply");
        const QString unknown = QStringLiteral("UNKNOWN COMMAND - Command list:");

        row("line not unscrambled", "~ERR", "ERR");
        row("empty line", "", unknown);
        row("other letter case", "Ver", unknown);
        row("word with a blank", "DIS ", unknown);
        row("keep-alive", "BLABLA", "");
        row("disconnect", "DIS", "DISCONNECTED");
        row("device count", "DEVCOUNT]![ignored", "DEVCOUNT,2");

        row("device without index", "DEVINFO", QLatin1String("DEVINFO_OK,0,") + kBareDevice);
        row("device by no number", "DEVINFO]![abc", QLatin1String("DEVINFO_OK,0,") + kBareDevice);
        row("device by a number too large", "DEVINFO]![4294967297",
            QLatin1String("DEVINFO_OK,0,") + kBareDevice);
        row("device beyond the last", "DEVINFO]![02", "DEVINFO_ERR,[2]");
        row("negative device", "DEVINFO]![-1", "DEVINFO_ERR,[-1]");
        row("S.M.A.R.T. information", "SMARTINFO]![1", "SMARTINFO_OK,1,{9~0~0~100~0~0~0}");
        row("S.M.A.R.T. information beyond", "SMARTINFO]![2", "SMARTINFO_ERR,[2]");
        row("S.M.A.R.T. values", "SMARTVALUE]![1", "SMARTVALUE_OK,1,{9~;10}");
        row("S.M.A.R.T. values beyond", "SMARTVALUE]![2", "SMARTVALUE_ERR,[2]");
        row("S.M.A.R.T. of all", "ALLSMARTINFO", "ALLSMARTINFO_OK]![1~;9~;0~;0~;0~;0~;100~;0~;0~;0");

        row("volume", "VOLINFO]![1]![1", "VOLINFO_OK,1,1,D:\\~;~;~;~;0~;0");
        row("volume beyond the last", "VOLINFO]![1]![2", "VOLINFO_ERR,[1,2]");
        row("negative volume", "VOLINFO]![1]![-1", "VOLINFO_ERR,[1,-1]");
        row("volume of no device", "VOLINFO]![2]![0", "VOLINFO_ERR,[2]");
        row("volume index missing: both are 0", "VOLINFO]![1", "VOLINFO_ERR,[0,0]");
        row("volumes of all", "ALLVOLINFO", "ALLVOLINFO_OK]![1~;C:\\~;~;~;~;0~;0]~[1~;D:\\~;~;~;~;0~;0");

        row("user count", "USERCOUNT", "USERCOUNT,1");
        row("user", "USERINFO]![0", "USERINFO,0,Operator,Admin");
        row("user without index", "USERINFO", "USERINFO,0,Operator,Admin");
        row("user beyond the last", "USERINFO]![1", "USERINFO,1,");
        row("password without fields", "CHECKPASS", "CHECKPASS,111");

        row("schedule", "GETSCANSCHED", "SCANSCHED]![0~;0~;0~;~;]![1~;0~;0~;~;");
        row("scan status", "GSTATSCAN", "STATSCAN]![0;0;0;0;0;261105090807|1;1;0;0;0;261105090807");
        row("temperatures", "GSTATD]![261105000000]![261106000000", "STATD]![<261105000000><261106000000>");
        row("temperatures without period", "GSTATR", "STATR]![<><>");

        row("SET without list", "SET", unknown);
        row("SETSCANSCHED without schedule", "SETSCANSCHED", unknown);
        row("STARTSCAN with four fields", "STARTSCAN]![0]![512]![0", unknown);
        row("STOPSCAN without index", "STOPSCAN", unknown);
    }

    void replies()
    {
        QFETCH(QString, request);
        FakeTarget target;
        fill(target);
        QTEST(replyTo(request, target), "reply");
        QCOMPARE(target.calls, QStringList());
    }

    void calls_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QString>("reply");
        QTest::addColumn<QString>("call");

        row("RESET", "RESET", "RESET_OK", "resetInfo");
        row("REFRESH", "REFRESH", "REFRESH_OK", "refreshInfo");
        row("SETSCANSCHED", "SETSCANSCHED]![1~;2~;", "SCANSCHED]![0~;0~;0~;~;]![1~;0~;0~;~;",
            "setScanSchedule 1~;2~;");
        row("STARTSCAN", "STARTSCAN]![1]![65536]![9000000000]![9000000001", "STARTEDSCAN]![1",
            "startScan 1 65536 9000000000 9000000001");
        row("STARTSCAN of no numbers", "STARTSCAN]![ x]![]![a]![b", "STARTEDSCAN]![ x", "startScan 0 0 0 0");
        row("STOPSCAN", "STOPSCAN]![01", "STOPEDSCAN]![01", "stopScan 1");
        row("STOPSCAN beyond the last", "STOPSCAN]![7", "STOPEDSCAN]![7", "stopScan 7");
    }

    void calls()
    {
        QFETCH(QString, request);
        FakeTarget target;
        fill(target);
        QTEST(replyTo(request, target), "reply");
        QTEST(target.calls.join(QLatin1Char('|')), "call");
    }

    void tellsTheEndOfAnEndedScan()
    {
        EndingScanTarget target;
        fill(target);
        QVERIFY(replyTo(QStringLiteral("GSTATSCAN"), target).contains(QLatin1String("|1;1;100;")));
    }

    void gates_data()
    {
        QTest::addColumn<bool>("paused");
        QTest::addColumn<bool>("detecting");
        QTest::addColumn<QString>("reply");
        row("paused", true, false, "PAUSED");
        row("detecting", false, true, "DETECTING");
        row("paused while detecting", true, true, "PAUSED");
    }

    void gates()
    {
        QFETCH(bool, paused);
        QFETCH(bool, detecting);
        FakeTarget target;
        target.paused = paused;
        target.detecting = detecting;
        for (const char *request : {"RESET", "DIS", "BLABLA", "~ERR", "nonsense"})
            QTEST(replyTo(QLatin1String(request), target), "reply");
        QCOMPARE(target.calls, QStringList());
    }

    void withoutDevices()
    {
        FakeTarget target;
        QCOMPARE(replyTo(QStringLiteral("ALLDEVINFO"), target), QStringLiteral("ALLDEVINFO_OK]![0"));
        QCOMPARE(replyTo(QStringLiteral("DEVINFO"), target), QStringLiteral("DEVINFO_ERR,[0]"));
        QCOMPARE(replyTo(QStringLiteral("GETSCANSCHED"), target), QStringLiteral("SCANSCHED"));
        QCOMPARE(replyTo(QStringLiteral("GSTATSCAN"), target), QStringLiteral("STATSCAN]!["));
    }

    void versionCarriesTheHostName()
    {
        FakeTarget target;
        QCOMPARE(replyTo(QStringLiteral("VER"), target),
                 QLatin1String("VER]![Halvex Service v 5.0.5]![5000]![180000]![300000]![") +
                     QHostInfo::localHostName());
    }

    void setTime_data()
    {
        QTest::addColumn<QString>("request");
        QTest::addColumn<QString>("reply");
        QTest::addColumn<qint64>("smart");
        QTest::addColumn<qint64>("freeSpace");
        row("both", "SETTIME]![1]![2147483647", "SETTIME_OK,1,2147483647", 1LL, 2147483647LL);
        row("first is 0", "SETTIME]![0]![5", "SETTIME_ERR,180000,300000", 180000LL, 300000LL);
        row("second is negative", "SETTIME]![5]![-5", "SETTIME_ERR,180000,300000", 180000LL, 300000LL);
        row("second is missing", "SETTIME]![5", "SETTIME_ERR,180000,300000", 180000LL, 300000LL);
        row("beyond 32 bits", "SETTIME]![5]![2147483648", "SETTIME_ERR,180000,300000", 180000LL, 300000LL);
    }

    void setTime()
    {
        QFETCH(QString, request);
        FakeTarget target;
        QTEST(replyTo(request, target), "reply");
        QTEST(target.settingsRecord.smartPollInterval, "smart");
        QTEST(target.settingsRecord.freeSpacePollInterval, "freeSpace");
    }

    void setTakesEveryItem()
    {
        FakeTarget target;
        const QString list =
            QStringLiteral("5000~;60000000000~;70000000000~;0~;2~;-1~;f~;t~;%1~;srv~;1~;u~;p~;26~;"
                           "50~;60~;w~;c~;ignored");
        QCOMPARE(replyTo(QLatin1String("SET]![") + list, target), QStringLiteral("SET_OK"));
        QCOMPARE(target.calls, QStringList({QStringLiteral("writeSettings"), QStringLiteral("checkHealth")}));
        const Settings &settings = target.settingsRecord;
        QCOMPARE(settings.smartPollInterval, 60000000000);
        QCOMPARE(settings.freeSpacePollInterval, 70000000000);
        QCOMPARE(settings.popupNotify, false);
        QCOMPARE(settings.emailNotify, true);
        QCOMPARE(settings.logSysEvLog, true);
        QCOMPARE(settings.smtpFrom, QStringLiteral("f"));
        QCOMPARE(settings.smtpTo, QStringLiteral("t"));
        QCOMPARE(settings.smtpSubj, QStringLiteral("%1"));
        QCOMPARE(settings.smtpServer, QStringLiteral("srv"));
        QCOMPARE(settings.smtpNeedAuth, true);
        QCOMPARE(settings.smtpUser, QStringLiteral("u"));
        QCOMPARE(settings.smtpPass, QStringLiteral("p"));
        QCOMPARE(settings.smtpPort, 26);
        QCOMPARE(settings.wTemp, 50);
        QCOMPARE(settings.cTemp, 60);
        QCOMPARE(settings.warnExtTask, QStringLiteral("w"));
        QCOMPARE(settings.critExtTask, QStringLiteral("c"));

        QCOMPARE(replyTo(QLatin1String("SET]![5001") + list.mid(4), target), QStringLiteral("SET_OK"));
        QCOMPARE(settings.port, 5001U);
        QVERIFY(target.calls.contains(QStringLiteral("requestRebind")));
    }

    void setIgnoresAShortList()
    {
        FakeTarget target;
        const QString seventeen =
            QStringLiteral("SET]![7~;1~;1~;1~;1~;1~;f~;t~;s~;srv~;1~;u~;p~;26~;50~;60~;w");
        QCOMPARE(replyTo(seventeen, target), QStringLiteral("SET_OK"));
        QCOMPARE(target.settingsRecord.port, 5000U);
        QCOMPARE(target.calls, QStringList());
    }
};

QTEST_APPLESS_MAIN(TestDispatcher)
#include "tst_dispatcher.moc"
