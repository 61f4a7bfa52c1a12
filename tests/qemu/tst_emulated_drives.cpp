// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "qemu/guest_machine.h"
#include "rows.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

constexpr int kDrives = 4;
constexpr int kDriveSize = 64 * 1024 * 1024;
constexpr int kPatienceMs = 120000;

/// Five drives, each in the file of its name. Two sectors of beta are unreadable; gamma is slow, so that it
/// can be unplugged during a scan; delta is present only while gamma is not.
const char *const kDevices =
    "-device ich9-ahci,id=fixed -device ich9-ahci,id=second -device ich9-ahci,id=third "
    "-device qemu-xhci,id=usb "
    "-blockdev node-name=alpha,driver=file,filename=alpha "
    "-device ide-hd,bus=fixed.0,drive=alpha,model=EMULATED-ALPHA,serial=SN-ALPHA-1,ver=A1.0 "
    "-blockdev node-name=beta-file,driver=file,filename=beta "
    "-blockdev node-name=beta,driver=blkdebug,image=beta-file,"
    "inject-error.0.event=none,inject-error.0.iotype=read,inject-error.0.sector=2048,"
    "inject-error.1.event=none,inject-error.1.iotype=read,inject-error.1.sector=2500 "
    "-device ide-hd,bus=ide.0,drive=beta,model=EMULATED-BETA,serial=SN-BETA-2,ver=B2.0 "
    "-blockdev node-name=gamma-file,driver=file,filename=gamma "
    "-object throttle-group,id=slow,x-bps-read=1048576 "
    "-blockdev node-name=gamma,driver=throttle,throttle-group=slow,file=gamma-file "
    "-device ide-hd,bus=second.0,drive=gamma,model=EMULATED-GAMMA,serial=SN-GAMMA-3,ver=C3.0 "
    "-blockdev node-name=delta,driver=file,filename=delta "
    "-device ide-hd,bus=third.0,drive=delta,model=EMULATED-DELTA,serial=SN-DELTA-5,ver=D4.0 "
    "-blockdev node-name=stick,driver=file,filename=stick "
    "-device usb-storage,bus=usb.0,drive=stick,serial=SN-STICK-4";

} // namespace

/// The service on the drives of a virtual machine, as its console shows them.
class TestEmulatedDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (const char *name : {"alpha", "beta", "gamma", "delta", "stick"}) {
            QFile image(m_machine.path(name));
            QVERIFY(image.open(QIODevice::WriteOnly) && image.resize(kDriveSize));
        }
        QCOMPARE(QProcess::execute("mke2fs", {"-q", "-F", m_machine.path("alpha")}), 0);
        const QStringList programs = QString(HALVEX_GUEST_PROGRAMS).split(',');
        QCOMPARE(m_machine.boot(programs + QStringList("--") + QString(kDevices).split(' ')).exitCode, 0);
        QVERIFY(waitFor("[ $(ls -d /sys/block/sd* | wc -l) = 5 ]"));
        // The tests' names of the drives' nodes, by the models that the kernel sees.
        run("node() { (cd /sys/block; grep -l \"$1\" sd*/device/model | sed 's,/.*,,; s,^,/dev/,'); }");
        run("alpha=$(node ALPHA) beta=$(node BETA) gamma=$(node GAMMA) delta=$(node DELTA) stick=$(node "
            "HARDDISK)");
        run("adapter() { basename $(cd -P /sys/block/${1#/dev/}/device/../../../..; pwd); }");
        run("second=$(adapter $gamma) third=$(adapter $delta)");
        run("pull() { echo $1 >/sys/bus/pci/drivers/ahci/unbind; }; "
            "plug() { echo $1 >/sys/bus/pci/drivers/ahci/bind; }");
        QCOMPARE(m_machine.run("pull $third").exitCode, 0);
        QVERIFY(waitFor("[ $(ls -d /sys/block/sd* | wc -l) = 4 ]"));

        QCOMPARE(m_machine.run("halvex-monitor-service -install").exitCode, 0);
        run("QT_LOGGING_RULES='halvex.*=true' halvex-monitor-service >>/tmp/service.log 2>&1 & service=$!");
        QVERIFY(waitFor("grep -q 'Collection info finished' /tmp/service.log"));
        console("intervals 100h 100h"); // no requests to drives except those of the tests
        QCOMPARE(console("detect --wait 120").object().value("drives").toInt(), kDrives);
    }

    void cleanupTestCase()
    {
        QCOMPARE(m_machine.run("halvex-monitor-service -terminate; wait $service").exitCode, 0);
        QCOMPARE(run("halvex-monitor-service -uninstall"),
                 "The service Halvex Service has been uninstalled.\n");
    }

    void cleanup()
    {
        if (QTest::currentTestFailed())
            qWarning("%s", run("tail -n 50 /tmp/*.log; dmesg | tail -n 20").constData());
    }

    void keepsTheContracts()
    {
        const GuestMachine::Answer answer = m_machine.run("tst_linux_machine");
        QVERIFY2(answer.exitCode == 0, answer.output);
        QCOMPARE(answer.output.count("PASS   : TestLinuxMachine::driveContract("), kDrives);
    }

    void reportsDriveInformation_data()
    {
        QTest::addColumn<QString>("model");
        QTest::addColumn<QString>("serial");
        QTest::addColumn<QString>("firmware");
        row("AHCI", "EMULATED-ALPHA", "SN-ALPHA-1", "A1.0");
        row("IDE", "EMULATED-BETA", "SN-BETA-2", "B2.0");
        row("second adapter", "EMULATED-GAMMA", "SN-GAMMA-3", "C3.0");
    }

    void reportsDriveInformation()
    {
        QFETCH(QString, model);
        const QJsonObject drive = console("smart " + number(model)).object();
        QTEST(drive.value("model").toString(), "model");
        QTEST(drive.value("serial").toString(), "serial");
        QTEST(drive.value("firmware").toString(), "firmware");
        QCOMPARE(drive.value("capacityBytes").toInt(), kDriveSize);
        QCOMPARE(drive.value("ataVersion").toString(), "ATA/ATAPI-5 published, ANSI NCITS 340-2000");
        QCOMPARE(drive.value("level").toString(), "fine");
        QVERIFY(drive.value("temperatureCelsius").isNull()); // attribute 190 exists, 194 does not

        // Id, value, worst, threshold, raw, pre-failure.
        QStringList attributes;
        for (const QJsonValue value : drive.value("attributes").toArray()) {
            QStringList fields;
            for (const char *key : {"id", "value", "worst", "threshold", "raw", "prefailure"})
                fields << value.toObject().value(key).toVariant().toString();
            attributes << fields.join(' ');
        }
        QCOMPARE(attributes,
                 QStringList({"1 100 100 6 0 true", "3 100 100 0 16 true", "4 100 100 20 100 false",
                              "5 100 100 36 0 true", "9 100 100 0 1 true", "12 100 100 0 0 true",
                              "190 69 69 50 522125343 true"}));
    }

    /// The count after a custom command only compares the drives with those of the list.
    void countingWakesNoDrive()
    {
        const QByteArray requests = "cat /sys/block/sd*/device/iorequest_cnt";
        const QByteArray counts = "grep -c 'processCommand timer 4 4' /tmp/service.log";
        // A second attempt, because a poll may come in between.
        QVERIFY(QTest::qWaitFor([&] {
            const QByteArray before = run(requests);
            run("counts=$(" + counts + "); halvex-monitor-service -command 1");
            return waitFor("[ $(" + counts + ") -gt $counts ]") && run(requests) == before;
        }));
    }

    void findsBadSectors_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("badSectors");
        row("sector by sector", " --first 2040 --last 2060 --block 512", "[[2048,2048]]");
        row("blocks", " --first 2000 --last 2600 --block 64K", "[[2000,2127],[2384,2511]]");
        row("between the bad sectors", " --first 2049 --last 2499 --block 512", "[]");
        row("whole drive", "", "[[2048,2559]]");
    }

    void findsBadSectors()
    {
        QFETCH(QString, options);
        const QString beta = number("BETA");
        console("scan start " + beta + options);
        const QJsonObject state = endOfScan(beta);
        const QJsonDocument found(state.value("badSectors").toArray());
        QTEST(QString(found.toJson(QJsonDocument::Compact)), "badSectors");
        QCOMPARE(state.value("percent").toInt(), 100);
    }

    void filesAVolumeUnderItsDrive()
    {
        QCOMPARE(m_machine.run("mount -t ext4 -o ro $alpha /mnt").exitCode, 0);
        console("refresh");
        const QList<QByteArray> blocks = run("stat -f -c '%S %b %f' /mnt").trimmed().split(' ');
        QTRY_COMPARE(console("volumes").array().size(), 1);
        const QJsonObject volume = console("volumes").array().first().toObject();
        QCOMPARE(m_machine.run("umount /mnt").exitCode, 0);
        QCOMPARE(volume.value("drive").toInt(), number("ALPHA").toInt());
        QCOMPARE(volume.value("fileSystem").toString(), "ext4");
        QCOMPARE(volume.value("totalBytes").toInt(), blocks.value(0).toInt() * blocks.value(1).toInt());
        QCOMPARE(volume.value("freeBytes").toInt(), blocks.value(0).toInt() * blocks.value(2).toInt());
    }

    void listsADriveBehindABridge()
    {
        const QJsonObject stick = drive("HARDDISK");
        QCOMPARE(stick.value("model").toString(), "QEMU QEMU HARDDISK");
        QCOMPARE(stick.value("smartState").toInt(), -1);
        QVERIFY(stick.value("level").isNull());
        QVERIFY(hasLogged("$stick: the bridge or adapter in front of the drive refuses ATA pass-through"));
    }

    void listsADriveWithoutSmart()
    {
        QCOMPARE(m_machine.run("smart_switch $gamma off").exitCode, 0);
        console("detect --wait 120");
        const QJsonObject gamma = drive("GAMMA");
        QCOMPARE(m_machine.run("smart_switch $gamma on").exitCode, 0);
        QCOMPARE(gamma.value("smartState").toInt(), -1);
        QCOMPARE(gamma.value("serial").toString(), "SN-GAMMA-3");
        QVERIFY(hasLogged("SN-GAMMA-3 has failed since"));
        console("detect --wait 120");
        QCOMPARE(drive("GAMMA").value("attributeCount").toInt(), 7);
    }

    void namesMissingPermissions()
    {
        run("mkdir /tmp/home && chown nobody /tmp/home && chmod 644 $alpha");
        run("HALVEX_HOME=/tmp/home QT_LOGGING_RULES='halvex.*=true' "
            "su nobody -c 'exec halvex-monitor-service -exec' >/tmp/other.log 2>&1 & other=$!");
        QVERIFY(waitFor("grep -q 'Collection info finished' /tmp/other.log"));
        QCOMPARE(m_machine.run("kill $other; wait $other").exitCode, 0);
        QVERIFY(hasLogged("$beta cannot be opened: Permission denied (the service needs root"));
        QVERIFY(hasLogged("$alpha: ATA pass-through needs CAP_SYS_RAWIO"));
    }

    void followsASwapUnderAScan()
    {
        const QString gamma = number("GAMMA");
        console("scan start " + gamma);
        QTRY_VERIFY_WITH_TIMEOUT(scanState(gamma).value("currentSector").toInt() > 0, kPatienceMs);
        QCOMPARE(m_machine.run("pull $second && plug $third").exitCode, 0);
        const QJsonArray bad = endOfScan(gamma).value("badSectors").toArray();
        QVERIFY(!bad.isEmpty());
        QCOMPARE(bad.last().toArray().last().toInt(), kDriveSize / 512 - 1);
        QVERIFY(waitFor("[ -b \"$(node DELTA)\" ]"));
        run("halvex-monitor-service -command 1");
        QTRY_COMPARE_WITH_TIMEOUT(serialNumbers(), "SN-ALPHA-1 SN-BETA-2 SN-DELTA-5", kPatienceMs);
        QCOMPARE(drive("DELTA").value("attributeCount").toInt(), 7);
    }

    /// No program has delta open, so gamma returns under the same node.
    void followsASwapUnderANode()
    {
        QCOMPARE(m_machine.run("delta=$(node DELTA); pull $third && plug $second").exitCode, 0);
        QVERIFY(waitFor("[ -b \"$(node GAMMA)\" ]"));
        QCOMPARE(m_machine.run("[ $(node GAMMA) = $delta ]").exitCode, 0);
        // Neither drive is read as the other.
        console("refresh");
        QCOMPARE(drive("DELTA").value("serial").toString(), "SN-DELTA-5");
        run("halvex-monitor-service -command 1");
        QTRY_COMPARE_WITH_TIMEOUT(serialNumbers(), "SN-ALPHA-1 SN-BETA-2 SN-GAMMA-3", kPatienceMs);
        QCOMPARE(run("grep -c identity /var/lib/halvex/drive-numbers.json").trimmed(), "5");
    }

private:
    QByteArray run(const QByteArray &commandLine) { return m_machine.run(commandLine).output; }

    bool waitFor(const QByteArray &commandLine)
    {
        return QTest::qWaitFor([&] { return m_machine.run(commandLine).exitCode == 0; }, kPatienceMs);
    }

    /// Returns whether a service has logged a text, which may contain variables of the machine's shell.
    bool hasLogged(const QByteArray &text)
    {
        return m_machine.run("grep -qF \"" + text + "\" /tmp/*.log").exitCode == 0;
    }

    /// Returns the output of halvexctl, as JSON; null after a message if it fails.
    QJsonDocument console(const QString &arguments)
    {
        const GuestMachine::Answer answer =
            m_machine.run("halvexctl --timeout 120 --json " + arguments.toLatin1() + " 2>/tmp/halvexctl.log");
        if (answer.exitCode != 0)
            qWarning("halvexctl %s: %s", qPrintable(arguments), run("cat /tmp/halvexctl.log").constData());
        return QJsonDocument::fromJson(answer.output);
    }

    QJsonObject drive(const QString &model)
    {
        for (const QJsonValue drive : console("status").object().value("drives").toArray()) {
            if (drive.toObject().value("model").toString().contains(model))
                return drive.toObject();
        }
        return {};
    }

    /// Returns the drives with serial numbers, in alphabetical order.
    QString serialNumbers()
    {
        QStringList serials;
        for (const QJsonValue drive : console("status --wait 120").object().value("drives").toArray()) {
            const QString serial = drive.toObject().value("serial").toString();
            if (serial.startsWith("SN-") && !serial.contains("STICK"))
                serials << serial;
        }
        serials.sort();
        return serials.join(' ');
    }

    QString number(const QString &model) { return QString::number(drive(model).value("number").toInt(-1)); }

    QJsonObject scanState(const QString &arguments)
    {
        return console("scan status " + arguments).array().first().toObject();
    }

    QJsonObject endOfScan(const QString &number) { return scanState(number + " --follow"); }

    GuestMachine m_machine;
};

QTEST_GUILESS_MAIN(TestEmulatedDrives)
#include "tst_emulated_drives.moc"
