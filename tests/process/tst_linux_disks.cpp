// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include <QDir>
#include <QJsonDocument>
#include <QTest>

namespace {

/// The built service on Linux's own backend, with disks of a preloaded library (stand_in_disks.cpp). Disks
/// are given as the lines of that library's file, with a blank for a tab.
class LinuxService : public ServiceFixture
{
public:
    LinuxService()
    {
        unsetMachine();
        setVariable("LD_PRELOAD", HALVEX_STAND_IN_DISKS);
        setVariable("STAND_IN_DISKS", path("disks"));
        // A sanitizer's run time must be the first library.
        setVariable("ASAN_OPTIONS", "verify_asan_link_order=0:" + qEnvironmentVariable("ASAN_OPTIONS"));
    }

    void setDisks(const QStringList &lines) const
    {
        if (!replaceFile(path("disks"), lines.join('\n').replace(' ', '\t').toUtf8() + '\n'))
            qFatal("the disks cannot be written");
    }
    void setSerialNumberPage(const QString &disk, const QByteArray &bytes) const
    {
        QDir(home()).mkpath("disks." + disk);
        writeFile(path("disks." + disk + "/vpd_pg80"), bytes);
    }
    /// Returns the models, serial numbers and firmware revisions of the list, as "MODEL|SERIAL|FIRMWARE".
    [[nodiscard]] QStringList drives()
    {
        QStringList all;
        for (int i = 0; i < ask("DEVCOUNT").section(',', 1).toInt(); ++i) {
            const QString info = ask(QString("DEVINFO]![%1").arg(i));
            all << info.section(',', 2).split("~;").mid(0, 3).join('|');
        }
        return all;
    }
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
        service.setSerialNumberPage("sda", QByteArray("\0\x80\0\0", 4));
        service.setSerialNumberPage("sdb", QByteArray("\0\x80\0\4PAGE", 8));
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
        QCOMPARE(QJsonDocument::fromJson(service.content("drive-numbers.json")),
                 QJsonDocument::fromJson(R"({"drives": [{"number": 0, "identity": "naa.500A"},
                     {"number": 1, "identity": "naa.500B"}, {"number": 2, "identity": "naa.500C"},
                     {"number": 3, "identity": "naa.500D"}]})"));
    }

    void damagedNumbersAreSetAside()
    {
        LinuxService service;
        writeFile(service.path("drive-numbers.json"), "{\"drives\": [");
        service.setDisks({disk("sda", "A")});
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(service.drives(), QStringList("MODEL|A|F1"));
        const QStringList aside = QDir(service.home()).entryList({"drive-numbers.json.damaged-*"});
        QCOMPARE(aside.size(), 1);
        QCOMPARE(service.content(aside.first()), QByteArray("{\"drives\": ["));
        QVERIFY(service.content("drive-numbers.json").contains("naa.500A"));
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
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QCOMPARE(service.drives(), (QStringList{"MODEL|A|F1", "MODEL|B|F1", "MODEL|C|F1"}));
        QVERIFY(service.command(0));
        const QStringList swapped{"MODEL|A|F1", "MODEL|C|F1", "MODEL|X|F1"};
        QTRY_COMPARE_WITH_TIMEOUT(service.drives(), swapped, kPatienceMs);
    }

    void hungDriveCostsOnlyItself()
    {
        const QString hanging = " sg16=hang";
        LinuxService service;
        service.setDisks({disk("sda", "A"), disk("sdb", "B") + hanging, disk("sdc", "C")});
        QVERIFY2(service.start(), service.output());
        QCOMPARE(service.firstLine(), "DETECTING");
        QCOMPARE(service.stop(), 0);

        QVERIFY2(service.serve(), service.output()); // after the time limit of one request
        QCOMPARE(service.ask("DEVCOUNT"), "DEVCOUNT,3");
        for (int i = 0; i < 3; ++i)
            QCOMPARE(service.ask(QString("SMARTINFO]![%1").arg(i)).contains("{194~"), i != 1);

        service.setDisks({disk("sda", "A"), disk("sdb", "B") + hanging, disk("sdc", "C") + hanging});
        RawConsole refreshing(service.port());
        refreshing.readLine();
        refreshing.send("REFRESH");
        QCOMPARE(service.ask("DEVCOUNT"), "DEVCOUNT,3");
        QVERIFY(!refreshing.socket().waitForReadyRead(0)); // its drive still hangs
        QCOMPARE(service.stop(), 0);
    }

    /// udev enumerates all disks once per detection and once per enumeration of the volumes.
    void detectionListsTheDisksOnce()
    {
        LinuxService service;
        service.setDisks({disk("sda", "A"), disk("sdb", "B"), disk("sdc", "C")});
        QVERIFY2(service.serve(), service.output());
        const int before = service.content("disks.scans").size();
        QVERIFY(service.ask("RESET").startsWith("RESET"));
        QTRY_VERIFY_WITH_TIMEOUT(service.firstLine().startsWith("VER]!["), kPatienceMs);
        const int scans = service.content("disks.scans").size() - before;
        QVERIFY2(scans >= 1 && scans <= 2, qPrintable(QString::number(scans)));
    }
};

QTEST_GUILESS_MAIN(TestLinuxDisks)
#include "tst_linux_disks.moc"
