// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/drive_contract.h"
#include "platform/linux/linux_drives.h"

/// The drives of the machine that this runs in: the virtual one, as root.
class TestLinuxDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void contract_data();
    void contract();
};

void TestLinuxDrives::contract_data()
{
    QTest::addColumn<QString>("path");
    LinuxDrives drives(std::make_shared<DiskNumbers>());
    for (int number = 0; number < 99; ++number) {
        const QString path = QStringLiteral("\\\\.\\PhysicalDrive%1").arg(number);
        if (drives.open(path).drive)
            QTest::newRow(qPrintable(path)) << path;
    }
}

void TestLinuxDrives::contract()
{
    QFETCH(QString, path);
    LinuxDrives drives(std::make_shared<DiskNumbers>());
    drive_contract::check(drives, path);
}

QTEST_APPLESS_MAIN(TestLinuxDrives)
#include "tst_linux_drives.moc"
