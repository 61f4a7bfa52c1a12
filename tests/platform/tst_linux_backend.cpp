// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
// The tables are made of texts: let them be plain literals.
#undef QT_NO_CAST_FROM_ASCII

#include "platform/linux/mount_table.h"
#include "platform/linux/sg_ata.h"
#include "rows.h"

using sg_ata::Outcome;

Q_DECLARE_METATYPE(sg_ata::Outcome)

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
        using sg_ata::Transfer;
        const QByteArray readData = QByteArray::fromHex("d001014fc2a0b000");
        QCOMPARE(hex(sg_ata::longCommand(ByteView(readData), Transfer::DataIn)),
                 "85080e00d000010001004f00c2a0b000");
        QCOMPARE(hex(sg_ata::shortCommand(ByteView(readData), Transfer::DataIn)), "a1080ed001014fc2a0b00000");
        // Only a command without data asks for the registers.
        const QByteArray returnStatus = QByteArray::fromHex("da00004fc2a0b000");
        QCOMPARE(hex(sg_ata::longCommand(ByteView(returnStatus), Transfer::None)),
                 "85062000da00000000004f00c2a0b000");
    }

    void sense_data()
    {
        QTest::addColumn<QString>("sense");
        QTest::addColumn<Outcome>("outcome");
        QTest::addColumn<QByteArray>("registers");
        const QByteArray ofTheDrive = "0400004fc2405100";
        const QByteArray aborted = "0400000000005100";
        const QByteArray none = "0000000000000000";
        row("registers of a command that went well", "7201001d0000000e 090c000000000000004f00c20050",
            Outcome::Done, QByteArray("0000004fc2005000"));
        row("a drive that aborted", "720b00000000000e 090c000400000000004f00c24051", Outcome::Failed,
            ofTheDrive);
        row("behind another descriptor", "720b000000000012 02020000 090c000400000000004f00c24051",
            Outcome::Failed, ofTheDrive);
        row("fixed format with registers", "700001045140000a00004fc2001d00000000", Outcome::Failed,
            ofTheDrive);
        row("aborted without registers", "70000b000000000a00000000000000000000", Outcome::Failed, aborted);
        row("a bridge that does not know the command", "700005000000000a00000000200000000000",
            Outcome::NotKnown, none);
        row("an address that the drive refuses", "720521000000000e 090c001000000000004f00c24051",
            Outcome::Failed, QByteArray("1000004fc2405100"));
        row("no medium", "72023a0000000000", Outcome::NotReady, none);
        row("descriptor cut off", "720b00000000000e 090c0004", Outcome::Failed, aborted);
        row("descriptor of length 0 at the end", "720b0000000000ff 0000", Outcome::Failed, aborted);
    }

    void sense()
    {
        QFETCH(QString, sense);
        const QByteArray bytes = QByteArray::fromHex(sense.toLatin1());
        const sg_ata::Verdict verdict = sg_ata::readSense(ByteView(bytes));
        QTEST(verdict.outcome, "outcome");
        QTEST(hex(verdict.registers), "registers");
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
            found << mount.mountPoint + '|' + mount.source + '|' + mount.fileSystem;
        QCOMPARE(found,
                 QStringList({"/|/dev/sda1|ext4", "/srv/my disk|/dev/sdb1|xfs", "/odd\\0|/dev/sdd1|ext4"}));
    }
};

QTEST_GUILESS_MAIN(TestLinuxBackend)

#include "tst_linux_backend.moc"
