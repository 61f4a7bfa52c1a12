// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/identify.h"

#include "rows.h"

#include <QRegularExpression>
#include <QtTest>

namespace {

void setWord(QByteArray &sector, int number, int value)
{
    qToLittleEndian(quint16(value), sector.data() + std::ptrdiff_t{2} * number);
}

} // namespace

class TestIdentify : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void text_data()
    {
        QTest::addColumn<QByteArray>("wire"); // the field byte for byte as the drive sends it
        QTest::addColumn<QString>("text");
        row("words swapped", QByteArray("DWC-12"), "WD-C21");
        row("odd length", QByteArray("BA C"), "ABC");
        row("blanks around and inside", QByteArray("   AB "), "A  B");
        row("other white space", QByteArray("\tA\nB\r\v"), "A\tB");
        row("every place used", QByteArray("BADCFEHGJILKNMPORQTS"), "ABCDEFGHIJKLMNOPQRST");
        row("all blank", QByteArray(), "");
        row("ends at a NUL", QByteArray("BA\0CED", 6), "ABC");
    }

    void text()
    {
        QFETCH(QByteArray, wire);
        QByteArray sector(512, ' ');
        sector.replace(2 * identify::kSerialNumber.firstWord, wire.size(), wire);
        QTEST(identify::text(ByteView(sector), identify::kSerialNumber), "text");
    }

    void capabilities_data()
    {
        QTest::addColumn<QList<int>>("words"); // 82, 83, 85, 87
        QTest::addColumn<int>("supported");
        QTest::addColumn<int>("enabled");
        row("S.M.A.R.T. on", QList<int>{0x346B, 0x7D09, 0x3469, 0x4163}, 1, 1);
        row("switched off", QList<int>{0x346B, 0x7D09, 0x3468, 0x4163}, 1, 0);
        row("not supported", QList<int>{0x346A, 0x4000, 0x3468, 0x4000}, 0, 0);
        row("words not valid", QList<int>{0x0001, 0x0000, 0x0000, 0x0000}, -1, 1);
        row("floating bus", QList<int>{0xFFFF, 0xFFFF, 0xFFFE, 0xFFFF}, -1, 1);
        row("one pair valid", QList<int>{0x0001, 0x8000, 0x0000, 0x7FFF}, -1, 0);
    }

    void capabilities()
    {
        QFETCH(QList<int>, words);
        QByteArray sector(512, '\0');
        for (const int number : {82, 83, 85, 87})
            setWord(sector, number, words.takeFirst());
        QTEST(identify::smartSupported(ByteView(sector)), "supported");
        QTEST(identify::smartEnabled(ByteView(sector)), "enabled");
    }

    void version_data()
    {
        QTest::addColumn<int>("word80");
        QTest::addColumn<int>("word81");
        QTest::addColumn<int>("number");
        QTest::addColumn<QString>("text");
        row("not reported", 0x0000, 18, -1, "");
        row("not reported either", 0xFFFF, 18, -1, "");
        row("first row", 0x0002, 1, 1, "ATA-1 X3T9.2 781D prior to revision 4");
        row("ATA-3 draft", 0x000E, 6, -3, "ATA-3 X3T10 2008D revision 1");
        row("last row", 0x007E, 34, 6, "ATA/ATAPI-6 published, ANSI INCITS 361-2002");
        row("minor version above the table", 0x03FC, 35, 9, "");
        row("row 0", 0x01F0, 0, 8, "");
        row("reserved row", 0x01F0, 29, 8, "");
        row("largest minor", 0x8000, 0xFFFF, 15, "");
        row("bit 0 alone", 0x0001, 0, 1, "");
    }

    void version()
    {
        QFETCH(int, word80);
        QFETCH(int, word81);
        QByteArray sector(512, '\0');
        setWord(sector, 80, word80);
        setWord(sector, 81, word81);
        const identify::AtaVersion version = identify::ataVersion(ByteView(sector));
        QTEST(version.major, "number");
        QTEST(version.text, "text");
    }

    /// A number is negative if it is a draft's.
    void versionsAreNumberedAsTheirTextsSay()
    {
        const QRegularExpression format(QStringLiteral("^ATA(/ATAPI)?-(\\d)"));
        int named = 0;
        for (int minor = 0; minor < 40; ++minor) {
            QByteArray sector(512, '\0');
            setWord(sector, 80, 0x8000);
            setWord(sector, 81, minor);
            const identify::AtaVersion version = identify::ataVersion(ByteView(sector));
            const auto match = format.match(version.text);
            if (match.hasMatch())
                QCOMPARE(qAbs(version.major), match.captured(2).toInt());
            named += match.hasMatch() ? 1 : 0;
        }
        QVERIFY(named > 25);
    }
};

QTEST_APPLESS_MAIN(TestIdentify)
#include "tst_identify.moc"
