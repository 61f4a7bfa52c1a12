// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
// The tables are made of texts: let them be plain literals.
#undef QT_NO_CAST_FROM_ASCII

#include "qemu/guest_machine.h"
#include "rows.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

namespace {

constexpr quint16 kServicePort = 5000;
constexpr qint64 kDriveSize = 64LL * 1024 * 1024;
constexpr int kLastSector = int(kDriveSize / 512) - 1;
constexpr int kPatienceMs = 300000; // longer than halvexctl waits for one answer

/// What each drive is made of, by the name of its image.
const QStringList kDrives{"alpha", "beta", "gamma", "stick"};

QStringList devices(const GuestMachine &machine)
{
    QStringList result;
    const auto add = [&result](const QString &option, const QString &value) { result << option << value; };
    const auto image = [&machine](const QString &name) {
        return QString("node-name=%1-file,driver=file,filename=%2").arg(name, machine.path(name));
    };
    for (const QString &name : kDrives)
        add("-blockdev", image(name));
    // Two sectors of beta cannot be read; gamma is slow enough to be pulled in the middle of a scan.
    add("-blockdev", "node-name=beta,driver=blkdebug,image=beta-file,"
                     "inject-error.0.event=none,inject-error.0.iotype=read,inject-error.0.sector=2048,"
                     "inject-error.1.event=none,inject-error.1.iotype=read,inject-error.1.sector=2500");
    add("-object", "throttle-group,id=slow,x-bps-read=1048576");
    add("-blockdev", "node-name=gamma,driver=throttle,throttle-group=slow,file=gamma-file");
    add("-device", "ich9-ahci,id=fixed");
    add("-device", "ich9-ahci,id=pulled");
    add("-device", "qemu-xhci,id=usb");
    add("-device", "ide-hd,bus=fixed.0,drive=alpha-file,model=EMULATED ALPHA,serial=SN-ALPHA-1,ver=A1.0");
    add("-device", "ide-hd,bus=ide.0,drive=beta,model=EMULATED BETA,serial=SN-BETA-2,ver=B2.0");
    add("-device", "ide-hd,bus=pulled.0,drive=gamma,model=EMULATED GAMMA,serial=SN-GAMMA-3,ver=C3.0");
    add("-device", "usb-storage,id=stick,bus=usb.0,drive=stick-file,serial=SN-STICK-4");
    return result;
}

/// What drive_reader prints of a drive: 512 bytes each, or nothing.
struct Sectors
{
    QByteArray identify;
    QByteArray data;
    QByteArray thresholds;

    [[nodiscard]] int word(int index) const
    {
        return byte(identify, 2 * index) | byte(identify, 2 * index + 1) << 8;
    }
    [[nodiscard]] QString text(int firstWord, int words) const
    {
        QByteArray bytes;
        for (int i = firstWord; i < firstWord + words; ++i)
            bytes += QByteArray(1, char(word(i) >> 8)) + char(word(i));
        return QString::fromLatin1(bytes).trimmed();
    }
    [[nodiscard]] QJsonArray attributes() const
    {
        QJsonArray result;
        for (int at = 2; at < 362 && byte(data, at) != 0; at += 12) {
            qint64 raw = 0;
            for (int i = 10; i >= 5; --i)
                raw = raw << 8 | byte(data, at + i);
            result.append(QJsonObject{{"id", byte(data, at)},
                                      {"value", byte(data, at + 3)},
                                      {"worst", byte(data, at + 4)},
                                      {"threshold", byte(thresholds, at + 1)},
                                      {"raw", raw},
                                      {"prefailure", (byte(data, at + 1) & 1) != 0}});
        }
        return result;
    }
    static int byte(const QByteArray &sector, int at) { return quint8(sector.at(at)); }
};

} // namespace

/// The service on the drives of a virtual machine, seen from outside, and the machine seen from inside.
class TestEmulatedDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        for (const QString &name : kDrives) {
            QFile image(m_machine.path(name));
            QVERIFY(image.open(QIODevice::WriteOnly) && image.resize(kDriveSize));
        }
        QCOMPARE(QProcess::execute("mke2fs", {"-q", "-F", m_machine.path("alpha")}), 0);
        QVERIFY2(m_machine.boot(QString(HALVEX_GUEST_PROGRAMS).split(','), devices(m_machine), kServicePort),
                 m_machine.kernelLog());
        QVERIFY2(m_machine.waitFor("[ $(ls -d /sys/block/sd* | wc -l) = 4 ]"), m_machine.kernelLog());

        QCOMPARE(m_machine.run("halvex-monitor-service -install").exitCode, 0);
        m_machine.run(
            "QT_LOGGING_RULES='halvex.*=true' halvex-monitor-service >>/tmp/service.log 2>&1 & service=$!");
        QVERIFY(m_machine.waitFor("grep -q 'Collection info finished' /tmp/service.log"));
        console("intervals 100h 100h"); // nothing but what a test asks for moves a drive
        QCOMPARE(console("detect --wait 120").object().value("drives").toInt(), kDrives.size());
    }

    void cleanupTestCase()
    {
        QCOMPARE(m_machine.run("halvex-monitor-service -terminate; wait $service").exitCode, 0);
        QCOMPARE(m_machine.run("halvex-monitor-service -uninstall").output,
                 "The service Halvex Service has been uninstalled.\n");
    }

    void cleanup()
    {
        if (QTest::currentTestFailed())
            qWarning("%s%s", m_machine.run("tail -n 50 /tmp/*.log").output.constData(),
                     m_machine.kernelLog().constData());
    }

    void keepsTheContracts()
    {
        const GuestMachine::Answer answer = m_machine.run("tst_linux_machine");
        QVERIFY2(answer.exitCode == 0, answer.output);
        QCOMPARE(answer.output.count("PASS   : TestLinuxMachine::driveContract("), kDrives.size());
    }

    void tellsWhatADriveTells_data()
    {
        QTest::addColumn<QString>("model");
        row("AHCI", "ALPHA");
        row("IDE", "BETA");
        row("second adapter", "GAMMA");
    }

    void tellsWhatADriveTells()
    {
        QFETCH(QString, model);
        const Sectors sectors = read(model.toLatin1());
        QCOMPARE(sectors.thresholds.size(), 512);
        const QJsonObject drive = console(QString("smart %1").arg(number(model))).object();

        QCOMPARE(drive.value("model").toString(), sectors.text(27, 20));
        QCOMPARE(drive.value("serial").toString(), sectors.text(10, 10));
        QVERIFY(sectors.text(10, 10).contains(model));
        QCOMPARE(drive.value("firmware").toString(), sectors.text(23, 4));
        QCOMPARE(qint64(drive.value("capacityBytes").toDouble()),
                 512 * (qint64(sectors.word(101)) << 16 | sectors.word(100)));
        QCOMPARE(drive.value("ataVersion").toString(),
                 "ATA/ATAPI-5 published, ANSI NCITS 340-2000"); // word 81 is 22
        QCOMPARE(drive.value("level").toString(), "fine");
        QVERIFY(drive.value("temperatureCelsius").isNull()); // there is an attribute 190, and no 194

        QJsonArray attributes;
        for (const QJsonValue value : drive.value("attributes").toArray()) {
            QJsonObject attribute = value.toObject();
            attribute.remove("name");
            attribute.remove("failing");
            attributes.append(attribute);
        }
        QCOMPARE(attributes, sectors.attributes());
        QCOMPARE(attributes.size(), 7);
    }

    /// The count that follows a custom command only looks whether the drives are still those of the list.
    void countingWakesNoDrive()
    {
        const QByteArray requests = "cat /sys/block/sd*/device/iorequest_cnt";
        const QByteArray counted = "processCommand timer 4 4";
        // Twice if need be: a reading of the service's own may fall in between.
        QVERIFY(QTest::qWaitFor([&] {
            const QByteArray before = m_machine.run(requests).output;
            m_machine.run("counts=$(grep -c '" + counted +
                          "' /tmp/service.log); halvex-monitor-service -command 1");
            return m_machine.waitFor("[ $(grep -c '" + counted + "' /tmp/service.log) -gt $counts ]") &&
                   m_machine.run(requests).output == before;
        }));
    }

    void findsBadSectors_data()
    {
        QTest::addColumn<QString>("options");
        QTest::addColumn<QString>("badSectors");
        row("sector by sector", " --first 2040 --last 2060 --block 512", "[[2048,2048]]");
        row("blocks", " --first 2000 --last 2600 --block 64K", "[[2000,2127],[2384,2511]]");
        row("between them", " --first 2049 --last 2499 --block 512", "[]");
        row("whole drive", "", "[[2048,2559]]");
    }

    void findsBadSectors()
    {
        QFETCH(QString, options);
        QFETCH(QString, badSectors);
        const int beta = number("BETA");
        console(QString("scan start %1%2").arg(beta).arg(options));
        const QJsonObject state = endOfScan(beta);
        const QJsonDocument found(state.value("badSectors").toArray());
        QCOMPARE(QString(found.toJson(QJsonDocument::Compact)), badSectors);
        QCOMPARE(state.value("percent").toInt(), 100);
    }

    void filesAVolumeUnderItsDrive()
    {
        const int alpha = number("ALPHA");
        QCOMPARE(m_machine.run("mount -t ext4 -o ro " + node("ALPHA") + " /mnt").exitCode, 0);
        console("refresh");
        const QList<QByteArray> blocks =
            m_machine.run("stat -f -c '%S %b %f' /mnt").output.trimmed().split(' ');
        QTRY_COMPARE(console("volumes").array().size(), 1);
        const QJsonObject volume = console("volumes").array().first().toObject();
        QCOMPARE(m_machine.run("umount /mnt").exitCode, 0);
        QCOMPARE(volume.value("drive").toInt(), alpha);
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
        const QByteArray hint =
            node("HARDDISK") + ": the bridge or adapter in front of the drive refuses ATA pass-through";
        QCOMPARE(m_machine.run("grep -q '" + hint + "' /tmp/service.log").exitCode, 0);
    }

    void listsADriveWithoutSmart()
    {
        const QByteArray reader = "drive_reader " + node("GAMMA");
        QCOMPARE(m_machine.run(reader + " disable").exitCode, 0);
        console("detect --wait 120");
        const QJsonObject gamma = drive("GAMMA");
        const QByteArray log = m_machine.run("cat /tmp/service.log").output;
        QCOMPARE(m_machine.run(reader + " enable").exitCode, 0);
        QCOMPARE(gamma.value("smartState").toInt(), -1);
        QCOMPARE(gamma.value("serial").toString(), "SN-GAMMA-3");
        QVERIFY2(log.contains("has no S.M.A.R.T. data to give"), log);
        console("detect --wait 120");
        QCOMPARE(drive("GAMMA").value("attributeCount").toInt(), 7);
    }

    void saysWhatItMayNot()
    {
        const QByteArray alpha = node("ALPHA");
        m_machine.run("mkdir /tmp/home && chown nobody /tmp/home && chmod 644 " + alpha);
        m_machine.run("HALVEX_HOME=/tmp/home QT_LOGGING_RULES='halvex.*=true' "
                      "su nobody -c 'exec halvex-monitor-service -exec' >/tmp/other.log 2>&1 & other=$!");
        QVERIFY(m_machine.waitFor("grep -q 'Collection info finished' /tmp/other.log"));
        QCOMPARE(m_machine.run("kill $other; wait $other").exitCode, 0);
        const QByteArray log = m_machine.run("cat /tmp/other.log").output;
        QVERIFY2(log.contains(node("BETA") + " cannot be opened: Permission denied (the service needs root"),
                 log);
        QVERIFY2(log.contains(alpha + ": ATA pass-through needs CAP_SYS_RAWIO"), log);
    }

    void goesOnWithoutAPulledDrive()
    {
        const int gamma = number("GAMMA");
        console(QString("scan start %1").arg(gamma));
        QTRY_VERIFY_WITH_TIMEOUT(scanState(gamma).value("currentSector").toInt() > 0, kPatienceMs);
        QVERIFY(m_machine.pull("pulled"));
        const QJsonArray bad = endOfScan(gamma).value("badSectors").toArray();
        QVERIFY(!bad.isEmpty());
        QCOMPARE(bad.last().toArray().last().toInt(), kLastSector);
        QVERIFY(m_machine.pull("stick"));

        m_machine.run("halvex-monitor-service -command 1");
        QTRY_COMPARE_WITH_TIMEOUT(console("status --wait 120").object().value("drives").toArray().size(), 2,
                                  kPatienceMs);
        QCOMPARE(drive("ALPHA").value("attributeCount").toInt(), 7);
        QVERIFY(drive("GAMMA").isEmpty());
    }

    void goesOnWithoutDrives()
    {
        m_machine.run("for drive in /sys/block/sd*; do echo 1 >$drive/device/delete; done");
        QCOMPARE(console("detect --wait 120").object().value("drives").toInt(-1), 0);
        QCOMPARE(console("status").object().value("drives").toArray().size(), 0);
    }

private:
    /// What halvexctl prints, as JSON; null after a message when it fails.
    QJsonDocument console(const QString &arguments)
    {
        QProcess program;
        program.start(HALVEX_CONSOLE_PROGRAM, QString("--host 127.0.0.1 --port %1 --timeout 120 --json %2")
                                                  .arg(m_machine.port())
                                                  .arg(arguments)
                                                  .split(' '));
        if (!program.waitForFinished(kPatienceMs) || program.exitCode() != 0)
            qWarning("halvexctl %s: %s", qPrintable(arguments), program.readAllStandardError().constData());
        return QJsonDocument::fromJson(program.readAllStandardOutput());
    }

    QJsonObject drive(const QString &model)
    {
        for (const QJsonValue drive : console("status").object().value("drives").toArray()) {
            if (drive.toObject().value("model").toString().contains(model))
                return drive.toObject();
        }
        return {};
    }

    int number(const QString &model) { return drive(model).value("number").toInt(-1); }

    QJsonObject scanState(int number)
    {
        return console(QString("scan status %1").arg(number)).array().first().toObject();
    }

    /// The state of a drive's scan once it has ended.
    QJsonObject endOfScan(int number)
    {
        QJsonObject state;
        const auto hasEnded = [&] {
            state = scanState(number);
            return state.value("running") == QJsonValue(false);
        };
        return QTest::qWaitFor(hasEnded, kPatienceMs) ? state : QJsonObject();
    }

    /// The device node of the drive whose model as the kernel has it contains `model`.
    QByteArray node(const QByteArray &model)
    {
        return "/dev/" + m_machine
                             .run("basename $(dirname $(dirname $(grep -l '" + model +
                                  "' /sys/block/sd*/device/model)))")
                             .output.trimmed();
    }

    Sectors read(const QByteArray &model)
    {
        const QList<QByteArray> lines = m_machine.run("drive_reader " + node(model)).output.split('\n');
        const auto bytes = [&lines](int line) {
            return QByteArray::fromHex(lines.value(line).split(' ').value(1));
        };
        return {bytes(0), bytes(1), bytes(2)};
    }

    GuestMachine m_machine;
};

QTEST_GUILESS_MAIN(TestEmulatedDrives)
#include "tst_emulated_drives.moc"
