// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/mount_table.h"
#include "platform/linux/sg_ata.h"

#include <QTest>

/// What the Linux backend makes of bytes: commands for the kernel, and what comes back.
template <typename Array>
static QByteArray hex(const Array &bytes)
{
    return QByteArray(reinterpret_cast<const char *>(bytes.data()), int(bytes.size())).toHex();
}

class TestLinuxBackend : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commands()
    {
        const QByteArray readData = QByteArray::fromHex("d001014fc2a0b000");
        const QByteArray returnStatus = QByteArray::fromHex("da00004fc2a0b000");
        using sg_ata::Transfer;
        QCOMPARE(hex(sg_ata::longCommand(ByteView(readData), Transfer::DataIn)),
                 QByteArray("85080e00d00001000100"
                            "4f00c2a0b000"));
        QCOMPARE(hex(sg_ata::shortCommand(ByteView(readData), Transfer::DataIn)),
                 QByteArray("a1080ed001014fc2a0b00000"));
        // Only a command without data asks for the registers.
        QCOMPARE(hex(sg_ata::longCommand(ByteView(returnStatus), Transfer::None)),
                 QByteArray("85062000da00000000004f00c2a0b000"));
    }

    void sense_data()
    {
        QTest::addColumn<QByteArray>("sense");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QByteArray>("registers");
        const auto row = [](const char *name, const char *sense, sg_ata::Outcome outcome,
                            const char *registers) {
            QTest::newRow(name) << QByteArray::fromHex(sense) << int(outcome) << QByteArray(registers);
        };
        row("registers of a command that went well",
            "720100"
            "1d0000000e"
            "090c00000000"
            "0000004f00c2"
            "0050",
            sg_ata::Outcome::Done, "0000004fc2005000");
        row("a drive that aborted",
            "720b00"
            "000000000e"
            "090c00040000"
            "0000004f00c2"
            "4051",
            sg_ata::Outcome::Failed, "0400004fc2405100");
        row("behind another descriptor",
            "720b0000"
            "00000012"
            "02020000"
            "090c000400000000004f00c24051",
            sg_ata::Outcome::Failed, "0400004fc2405100");
        row("fixed format with registers",
            "700001"
            "045140"
            "000a00"
            "004fc2"
            "001d00000000",
            sg_ata::Outcome::Failed, "0400004fc2405100");
        row("aborted without registers",
            "70000b00000000"
            "0a00000000"
            "0000"
            "00000000",
            sg_ata::Outcome::Failed, "0400000000005100");
        row("a bridge that does not know the command",
            "70000500000000"
            "0a00000000"
            "2000"
            "00000000",
            sg_ata::Outcome::NotKnown, "0000000000000000");
        row("an address that the drive refuses",
            "72052100"
            "0000000e"
            "090c001000000000004f00c24051",
            sg_ata::Outcome::Failed, "1000004fc2405100");
        row("no medium", "72023a0000000000", sg_ata::Outcome::NotReady, "0000000000000000");
        row("descriptor cut off",
            "720b0000"
            "0000000e"
            "090c0004",
            sg_ata::Outcome::Failed, "0400000000005100");
        row("descriptor of length 0 at the end",
            "720b0000000000ff"
            "0000",
            sg_ata::Outcome::Failed, "0400000000005100");
    }

    void sense()
    {
        QFETCH(QByteArray, sense);
        QFETCH(int, outcome);
        QFETCH(QByteArray, registers);
        const sg_ata::Verdict verdict = sg_ata::readSense(ByteView(sense));
        QCOMPARE(int(verdict.outcome), outcome);
        QCOMPARE(hex(verdict.registers), registers);
    }

    void mounts()
    {
        const QVector<Mount> mounts =
            parseMountTable("22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n"
                            "23 22 0:21 / /proc rw - proc proc rw\n"
                            "24 22 8:17 / /srv/my\\040disk rw shared:2 master:3 - xfs /dev/sdb1 rw\n"
                            "25 22 8:1 /sub /mnt/bind rw - ext4 /dev/sda1 rw\n"
                            "26 22 0:40 / /net rw - nfs4 server:/export rw\n"
                            "27 22 8:33 /\n"
                            "28 22 8:49 / /odd\\0 rw - ext4 /dev/sdd1 rw");
        QStringList found;
        for (const Mount &mount : mounts)
            found << mount.mountPoint + QLatin1Char('|') + mount.source + QLatin1Char('|') + mount.fileSystem;
        QCOMPARE(found, QStringList({QStringLiteral("/|/dev/sda1|ext4"),
                                     QStringLiteral("/srv/my disk|/dev/sdb1|xfs"),
                                     QStringLiteral("/odd\\0|/dev/sdd1|ext4")}));
    }
};

QTEST_GUILESS_MAIN(TestLinuxBackend)

#include "tst_linux_backend.moc"
