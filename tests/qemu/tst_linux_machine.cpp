// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/datagram_socket.h"
#include "platform/drive_contract.h"
#include "platform/linux/linux_drives.h"
#include "platform/linux/linux_event_log.h"
#include "rows.h"

#include <QDir>

/// The virtual machine in which this runs as root. It has no journal and no syslog: the tests take their
/// places.
class TestLinuxMachine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void driveContract_data()
    {
        QTest::addColumn<QString>("path");
        LinuxDrives drives(std::make_shared<DiskNumbers>());
        for (int number = 0; number < 99; ++number) {
            const QString path = QString("\\\\.\\PhysicalDrive%1").arg(number);
            if (drives.open(path).drive)
                row(qPrintable(path), path);
        }
    }

    void driveContract()
    {
        QFETCH(QString, path);
        LinuxDrives drives(std::make_shared<DiskNumbers>());
        drive_contract::check(drives, path);
    }

    void eventLog()
    {
        const Event event{"Halvex", EventType::Warning, 3, 2, "hot\ndrive", "\x01"};
        LinuxEventLog log;
        const DatagramSocket syslog("/dev/log");
        log.report(event);
        const QByteArray line = syslog.receive();
        QVERIFY2(line.startsWith("<28>") && line.endsWith(": Halvex: hot\ndrive"), line);

        QVERIFY(QDir().mkpath("/run/systemd/journal"));
        const DatagramSocket journal("/run/systemd/journal/socket");
        log.report(event);
        // The journal's own format: the length, then a value of several lines.
        QCOMPARE(journal.receive(),
                 QByteArray("MESSAGE\n\x09\0\0\0\0\0\0\0hot\ndrive\n", 26) +
                     "PRIORITY=4\nSYSLOG_FACILITY=3\nSYSLOG_IDENTIFIER=halvex-monitor-service\n"
                     "HALVEX_SOURCE=Halvex\nHALVEX_TYPE=2\nHALVEX_CATEGORY=3\nHALVEX_ID=2\n"
                     "HALVEX_DATA=\x01\n");
    }
};

QTEST_APPLESS_MAIN(TestLinuxMachine)
#include "tst_linux_machine.moc"
