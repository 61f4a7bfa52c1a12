// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/sectors.h"
#include "rows.h"

#include <QtTest>

namespace {

DriveState fourKilobyteDrive()
{
    DriveState drive;
    drive.model = QStringLiteral("HGST HUH721008ALE604");
    drive.serial = QStringLiteral("VJG4XYZ");
    drive.firmware = QStringLiteral("A4GNT7J0-LONG");
    drive.capacityBytes = quint64(18000207937536);
    drive.bytesPerSector = 4096;
    drive.ataMajor = 1020;
    drive.ataMinor = 41;
    return drive;
}

SmartState twoAttributes()
{
    SmartState smart;
    smart.offlineStatus = 0x82;
    smart.offlineCapability = 83;
    smart.smartCapability = 0x0103;
    smart.attributes = {{5, 0x0133, 36, 35, 36, 0}, {194, 34, 120, 110, 0, 0x2D0014001AFF}};
    return smart;
}

int sumOf(const QByteArray &bytes)
{
    quint8 sum = 0;
    for (const char c : bytes)
        sum = quint8(sum + quint8(c));
    return sum;
}

} // namespace

class TestSectors : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void identifyHoldsTheKeys()
    {
        const QByteArray sector = identifySector(fourKilobyteDrive());
        const ByteView words(sector);
        QCOMPARE(sector.size(), 512);
        QCOMPARE(sector.mid(54, 40), QByteArray("GHTSH HU270180LA6E40                    "));
        QCOMPARE(sector.mid(20, 20), QByteArray("JV4GYX Z            "));
        QCOMPARE(sector.mid(46, 8), QByteArray("4ANG7T0J"));
        QCOMPARE(words.le32(120), 0x0FFFFFFFu);          // words 60 and 61: as many as 28 bits count
        QCOMPARE(words.le64(200), quint64(4394582016));  // word 100: sectors of the drive's own size
        QCOMPARE(int(words.le16(212) & 0xD000), 0x5000); // word 106: a long logical sector
        QCOMPARE(words.le32(234), 2048u);                // word 117: its length in words
        QCOMPARE(int(words.le16(160)), 1020);            // word 80
        QCOMPARE(int(words.le16(162)), 41);              // word 81
        QCOMPARE(int(words.le16(164) & 1), 1);           // word 82
        QCOMPARE(int(words.le16(166) & 0xC000), 0x4000); // word 83
        QCOMPARE(int(words.le16(170) & 1), 1);           // word 85
        QCOMPARE(int(words.le16(174) & 0xC000), 0x4000); // word 87
        QCOMPARE(int(words.u8(510)), 0xA5);
        QCOMPARE(sumOf(sector), 0);
    }

    void identifyTellsSmartOff()
    {
        DriveState drive = fourKilobyteDrive();
        drive.smart.enabled = false;
        const QByteArray sector = identifySector(drive);
        QCOMPARE(int(ByteView(sector).le16(164) & 1), 1); // still supported
        QCOMPARE(int(ByteView(sector).le16(170) & 1), 0);
    }

    void smartSectorsHoldTheAttributes()
    {
        const QByteArray data = smartDataSector(twoAttributes());
        QCOMPARE(data.mid(2, 12), QByteArray::fromHex("05330124230000000000"
                                                      "0000"));
        QCOMPARE(data.mid(14, 12), QByteArray::fromHex("c22200786eff1a0014002d00"));
        QCOMPARE(data.mid(362, 8), QByteArray::fromHex("8200000000530301"));
        QCOMPARE(sumOf(data), 0);
        const QByteArray thresholds = smartThresholdSector(twoAttributes());
        QCOMPARE(thresholds.mid(2, 24), QByteArray::fromHex("0524") + QByteArray(10, '\0') +
                                            QByteArray::fromHex("c200") + QByteArray(10, '\0'));
        QCOMPARE(sumOf(thresholds), 0);
    }

    void predictsFailure_data()
    {
        QTest::addColumn<int>("flags");
        QTest::addColumn<int>("current");
        QTest::addColumn<int>("threshold");
        QTest::addColumn<bool>("predicted");
        row("above its threshold", 0x33, 37, 36, false);
        row("at its threshold", 0x33, 36, 36, true);
        row("below its threshold", 0x33, 1, 36, true);
        row("no pre-failure attribute", 0x32, 1, 36, false);
        row("no threshold", 0x33, 0, 0, false);
    }

    void predictsFailure()
    {
        QFETCH(int, flags);
        QFETCH(int, current);
        QFETCH(int, threshold);
        SmartState smart;
        smart.attributes = {{1, 0x0F, 100, 100, 6, 0},
                            {5, quint16(flags), quint8(current), 1, quint8(threshold), 0}};
        const QByteArray data = smartDataSector(smart);
        const QByteArray thresholds = smartThresholdSector(smart);
        QFETCH(bool, predicted);
        QCOMPARE(::predictsFailure(ByteView(data), ByteView(thresholds)), predicted);
    }
};

QTEST_GUILESS_MAIN(TestSectors)
#include "tst_sectors.moc"
