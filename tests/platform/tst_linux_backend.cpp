// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/mount_table.h"
#include "platform/linux/number_assignment.h"
#include "platform/linux/sg_ata.h"
#include "rows.h"

using sg_ata::Outcome;

Q_DECLARE_METATYPE(sg_ata::Outcome)

/// The Linux backend's rules over values: commands for the kernel, sense data, mounts, drive numbers.
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
        // Only a command without data requests the registers.
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
        row("after another descriptor", "720b000000000012 02020000 090c000400000000004f00c24051",
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

    void numbersStayWithTheIdentity()
    {
        QVector<number_assignment::Entry> entries;
        QCOMPARE(numbers(entries, "A@sda B@sdb C@sdc"), "0 1 2");
        QCOMPARE(numbers(entries, "C@sda A@sdb B@sdc"), "2 0 1"); // enumerated in another order
        QCOMPARE(numbers(entries, "C@sda B@sdc"), "2 1");         // unplugged
        QCOMPARE(numbers(entries, "C@sda D@sdb B@sdc"), "2 3 1"); // replaced: a new identity, a new number
        QCOMPARE(numbers(entries, "S@usb A@sdb"), "4 0");
        entries = *number_assignment::parse(number_assignment::format(entries)); // restarted
        QCOMPARE(numbers(entries, "E@sda D@sdb A@sdc"), "4 3 0"); // removable media are not stored
    }

    void equalIdentitiesGetDifferentNumbers()
    {
        QVector<number_assignment::Entry> entries;
        QCOMPARE(numbers(entries, "A@sda @sdb A@sdc @sdd"), "0 1 2 3");
        QCOMPARE(numbers(entries, "@sdd A@sdc"), "3 2"); // each keeps its number while the others are absent
        entries = *number_assignment::parse(number_assignment::format(entries));
        QCOMPARE(numbers(entries, "@sdb A@sde @sdg A@sdf"), "1 0 3 2");
    }

    void numbersRunOut()
    {
        QVector<number_assignment::Entry> entries;
        QStringList disks;
        for (int i = 0; i < number_assignment::kNumbers; ++i)
            disks << QString("D%1@n%1").arg(i);
        QVERIFY(numbers(entries, disks.join(' ')).endsWith(" 98"));
        QCOMPARE(numbers(entries, (disks + QStringList("E@x")).join(' ')).section(' ', -1), "99");
        disks.removeAt(40);
        disks.removeAt(7);
        // A new disk gets the number of the absent disk that has been known longest.
        QCOMPARE(numbers(entries, (disks + QStringList("F@x")).join(' ')).section(' ', -1), "7");
        QCOMPARE(number_assignment::parse(number_assignment::format(entries))->size(), 99);
    }

    void damagedNumbers_data()
    {
        QTest::addColumn<QByteArray>("file");
        row("empty file", QByteArray());
        row("torn text", QByteArray("{\"drives\": [{\"number\": 0"));
        row("number given twice",
            QByteArray(R"({"drives": [{"number": 3, "identity": "A"}, {"number": 3, "identity": "B"}]})"));
        row("number 99", QByteArray(R"({"drives": [{"number": 99, "identity": "A"}]})"));
        row("number that is a text", QByteArray(R"({"drives": [{"number": "1", "identity": "A"}]})"));
        row("without identity", QByteArray(R"({"drives": [{"number": 1}]})"));
    }

    void damagedNumbers()
    {
        QFETCH(QByteArray, file);
        QVERIFY(!number_assignment::parse(file));
    }

private:
    /// Returns the numbers of disks that are given as "IDENTITY@NODE".
    static QString numbers(QVector<number_assignment::Entry> &entries, const QString &disks)
    {
        QVector<number_assignment::Disk> known;
        for (const QString &disk : disks.split(' ', Qt::SkipEmptyParts))
            known.append({disk.section('@', 0, 0), disk.section('@', 1), disk.endsWith("usb")});
        QStringList texts;
        for (const int number : number_assignment::assign(entries, known))
            texts << QString::number(number);
        return texts.join(' ');
    }
};

QTEST_GUILESS_MAIN(TestLinuxBackend)

#include "tst_linux_backend.moc"
