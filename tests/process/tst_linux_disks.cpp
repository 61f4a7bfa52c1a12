// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QTcpServer>
#include <QTest>

#include <csignal>

namespace {

/// The built service on Linux's own backend, with disks of a preloaded library (stand_in_disks.cpp). Disks
/// are given as the lines of that library's file, with a blank for a tab.
class LinuxService
{
public:
    LinuxService()
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        m_port = probe.serverPort();
        write("service-key.json", QJsonDocument(QJsonObject{{"Port", m_port}}).toJson());
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("HALVEX_HOME", m_home.path());
        environment.insert("LD_PRELOAD", HALVEX_STAND_IN_DISKS);
        environment.insert("STAND_IN_DISKS", m_home.filePath("disks"));
        // A sanitizer's run time must be the first library.
        environment.insert("ASAN_OPTIONS", "verify_asan_link_order=0:" + environment.value("ASAN_OPTIONS"));
        m_process.setProcessEnvironment(environment);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
    }
    ~LinuxService()
    {
        m_process.kill();
        m_process.waitForFinished();
    }
    LinuxService(const LinuxService &) = delete;
    LinuxService &operator=(const LinuxService &) = delete;

    void setDisks(const QStringList &lines)
    {
        write("disks.new", lines.join('\n').replace(' ', '\t').toUtf8() + '\n');
        QFile::remove(path("disks"));
        QFile::rename(path("disks.new"), path("disks"));
    }
    void write(const QString &name, const QByteArray &bytes) const
    {
        QFile file(path(name));
        if (!QDir().mkpath(QFileInfo(file).path()) || !file.open(QIODevice::WriteOnly) ||
            file.write(bytes) != bytes.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
    }
    [[nodiscard]] QByteArray read(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    [[nodiscard]] QStringList files(const QString &pattern) const
    {
        return QDir(m_home.path()).entryList({pattern});
    }

    void start() { m_process.start(HALVEX_SERVICE_PROGRAM, {"-exec"}); }
    /// Starts the service and waits until its first detection has ended.
    [[nodiscard]] bool serve()
    {
        start();
        return waitUntilReady();
    }
    [[nodiscard]] bool waitUntilReady()
    {
        return QTest::qWaitFor([this] { return firstLine().startsWith("VER]!["); }, kPatienceMs);
    }
    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QString firstLine() const { return RawConsole(m_port).readLine(); }
    [[nodiscard]] QString ask(const QString &request) const
    {
        RawConsole console(m_port);
        console.readLine();
        return console.ask(request);
    }
    /// Returns the models, serial numbers and firmware revisions of the list, as "MODEL|SERIAL|FIRMWARE".
    [[nodiscard]] QStringList drives() const
    {
        QStringList all;
        for (int i = 0; i < ask("DEVCOUNT").section(',', 1).toInt(); ++i) {
            const QString info = ask(QString("DEVINFO]![%1").arg(i));
            all << info.section(',', 2).split("~;").mid(0, 3).join('|');
        }
        return all;
    }
    /// Runs the program with options while the service runs. Returns its exit code.
    [[nodiscard]] int runOption(const QStringList &options) const
    {
        QProcess program;
        program.setProcessEnvironment(m_process.processEnvironment());
        program.start(HALVEX_SERVICE_PROGRAM, options);
        return program.waitForFinished(kPatienceMs) ? program.exitCode() : -1;
    }
    [[nodiscard]] int stop()
    {
        ::kill(pid_t(m_process.processId()), SIGTERM);
        return m_process.waitForFinished(kPatienceMs) ? m_process.exitCode() : -1;
    }
    [[nodiscard]] QByteArray output()
    {
        m_output += m_process.readAll();
        return m_output;
    }

private:
    [[nodiscard]] QString path(const QString &name) const { return m_home.filePath(name); }

    QTemporaryDir m_home;
    quint16 m_port = 0;
    QProcess m_process;
    QByteArray m_output;
};

/// Returns a disk that answers all requests, with a world wide name made of its serial number.
QString disk(const QString &node, const QString &serial)
{
    return QString("%1 wwid=naa.500%2 ata=MODEL|%2|F1 vendor=ATA model=MODEL").arg(node, serial);
}

const char kHostError[] = "7,0,";
const char kUnknownCommand[] = "0,0,700005000000000a00000000200000000000";
const char kHardwareError[] = "0,0,720400000000000e090c000000000000000000004070";
const char kAborted[] = "0,0,720b00000000000e090c000000000000000000004050";

} // namespace

/// The service on Linux's own backend, with unusual disks, adapters and udev data.
class TestLinuxDisks : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsThroughOddAdapters()
    {
        const QString inquiry = "ID_VENDOR=ATA ID_MODEL=CUT-MODEL ID_REVISION=CUT ID_SERIAL_SHORT=CUT-SERIAL";
        const QString full = "ata=FULL-LENGTH-MODEL|SERIAL|FIRMWARE";
        LinuxService service;
        service.setDisks({
            "sda wwid=a " + full + ' ' + inquiry,
            "sdb wwid=b " + full + " vendor=ATA ID_MODEL=UDEV-MODEL ID_REVISION=UDEV-FIRMWARE", // by ata_id
            "sdc wwid=c " + full + " vendor=Bridge model=Disk rev=1.0 sg16=" + kUnknownCommand,
            "sdd wwid=d " + full + " sg16=" + kHostError,
            "sde wwid=e " + full + " sg16=0,512,",
            "sdf wwid=f " + full + " sg16=" + kHardwareError,
            "sdg wwid=g " + full + " sg16=" + kAborted,
            "sdh wwid=h " + full + " removable=1",
        });
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.drives(),
                 (QStringList{"FULL-LENGTH-MODEL|SERIAL|FIRMWARE", "UDEV-MODEL|SERIAL|UDEV-FIRMWARE",
                              "Bridge Disk|SERIAL|1.0", "FULL-LENGTH-MODEL|SERIAL|FIRMWARE",
                              "FULL-LENGTH-MODEL|SERIAL|FIRMWARE", "||", "||"}));
        for (int i = 0; i < 7; ++i)
            QCOMPARE(service.ask(QString("SMARTINFO]![%1").arg(i)).contains("{194~"), i < 5);
        QCOMPARE(service.stop(), 0);
    }

    /// The kernel may have an empty page of the serial number for a USB drive.
    void serialNumberOfABridge()
    {
        const QString bridge = " wwid=a vendor=Bridge model=Disk rev=1 serial=USB-SERIAL sg16=";
        LinuxService service;
        service.write("disks.sda/vpd_pg80", QByteArray("\0\x80\0\0", 4));
        service.write("disks.sdb/vpd_pg80", QByteArray("\0\x80\0\4PAGE", 8));
        service.setDisks({"sda" + bridge + kAborted, "sdb" + bridge + kAborted, "sdc" + bridge + kAborted});
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.drives(),
                 (QStringList{"Bridge Disk|USB-SERIAL|1", "Bridge Disk|PAGE|1", "Bridge Disk|USB-SERIAL|1"}));
        QCOMPARE(service.stop(), 0);
    }

    void numbersSurviveRestarts()
    {
        LinuxService service;
        service.setDisks({disk("sda", "A"), disk("sdb", "B"), disk("sdc", "C")});
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.drives(), (QStringList{"MODEL|A|F1", "MODEL|B|F1", "MODEL|C|F1"}));
        QCOMPARE(service.stop(), 0);

        service.setDisks({disk("sda", "C"), disk("sdb", "D"), disk("sdc", "A")});
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.drives(), (QStringList{"MODEL|A|F1", "MODEL|C|F1", "MODEL|D|F1"}));
        QCOMPARE(service.stop(), 0);
        QCOMPARE(QJsonDocument::fromJson(service.read("drive-numbers.json")),
                 QJsonDocument::fromJson(R"({"drives": [{"number": 0, "identity": "naa.500A"},
                     {"number": 1, "identity": "naa.500B"}, {"number": 2, "identity": "naa.500C"},
                     {"number": 3, "identity": "naa.500D"}]})"));
    }

    void damagedNumbersAreSetAside()
    {
        LinuxService service;
        service.write("drive-numbers.json", "{\"drives\": [");
        service.setDisks({disk("sda", "A")});
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.drives(), QStringList("MODEL|A|F1"));
        const QStringList aside = service.files("drive-numbers.json.damaged-*");
        QCOMPARE(aside.size(), 1);
        QCOMPARE(service.read(aside.first()), QByteArray("{\"drives\": ["));
        QVERIFY(service.read("drive-numbers.json").contains("naa.500A"));
        QTRY_VERIFY2(service.output().contains("drive-numbers.json: damaged."), service.output());
    }

    /// The drive-count check sees another identity at the same node. The new drive is never read as the old
    /// one.
    void swapUnderANode()
    {
        LinuxService service;
        service.setDisks({disk("sda", "A"), disk("sdb", "B"), disk("sdc", "C")});
        QVERIFY2(service.serve(), service.output());
        service.setDisks({disk("sda", "A"), disk("sdb", "X"), disk("sdc", "C")});
        QCOMPARE(service.ask("REFRESH"), QString("REFRESH_OK"));
        QCOMPARE(service.drives(), (QStringList{"MODEL|A|F1", "MODEL|B|F1", "MODEL|C|F1"}));
        QCOMPARE(service.runOption({"-command", "0"}), 0);
        const QStringList swapped{"MODEL|A|F1", "MODEL|C|F1", "MODEL|X|F1"};
        QTRY_COMPARE_WITH_TIMEOUT(service.drives(), swapped, kPatienceMs);
    }

    void hungDriveCostsOnlyItself()
    {
        const QString hanging = " sg16=hang";
        LinuxService service;
        service.setDisks({disk("sda", "A"), disk("sdb", "B") + hanging, disk("sdc", "C")});
        service.start();
        QTRY_COMPARE_WITH_TIMEOUT(service.firstLine(), QString("DETECTING"), kPatienceMs);
        QCOMPARE(service.stop(), 0);

        QVERIFY2(service.serve(), service.output()); // after the time limit of one request
        QCOMPARE(service.ask("DEVCOUNT"), QString("DEVCOUNT,3"));
        for (int i = 0; i < 3; ++i)
            QCOMPARE(service.ask(QString("SMARTINFO]![%1").arg(i)).contains("{194~"), i != 1);

        service.setDisks({disk("sda", "A"), disk("sdb", "B") + hanging, disk("sdc", "C") + hanging});
        RawConsole refreshing(service.port());
        refreshing.readLine();
        refreshing.send("REFRESH");
        QCOMPARE(service.ask("DEVCOUNT"), QString("DEVCOUNT,3"));
        QVERIFY(!refreshing.socket().waitForReadyRead(0)); // its drive still hangs
        QCOMPARE(service.stop(), 0);
    }

    /// udev enumerates all disks once per detection and once per enumeration of the volumes.
    void detectionListsTheDisksOnce()
    {
        LinuxService service;
        service.setDisks({disk("sda", "A"), disk("sdb", "B"), disk("sdc", "C")});
        QVERIFY2(service.serve(), service.output());
        const int before = service.read("disks.scans").size();
        QVERIFY(service.ask("RESET").startsWith("RESET"));
        QTRY_VERIFY_WITH_TIMEOUT(service.firstLine().startsWith("VER]!["), kPatienceMs);
        const int scans = service.read("disks.scans").size() - before;
        QVERIFY2(scans >= 1 && scans <= 2, qPrintable(QString::number(scans)));
    }
};

QTEST_GUILESS_MAIN(TestLinuxDisks)
#include "tst_linux_disks.moc"
