// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "wire/scrambling.h"

#include "protocol/plain_scrambling.h"
#include "rows.h"

#include <QtTest>

class TestScrambling : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// A line longer than several rounds of the walk, with every value of the offset's byte.
    void walkOfEveryOffset()
    {
        QString text = QString(2, QChar(QChar::ByteOrderMark)) + "]~[ Größe Δ\r\n" +
                       QString::fromUtf8("\xF0\x9F\x96\xB4") + QChar(QChar::Null);
        for (int i = 0; i < 1000; ++i)
            text += QString::number(i);
        for (int offset = 0; offset <= 255; ++offset) {
            const QString plainLine = plain::scramble(text, offset);
            if (offset < 100)
                QCOMPARE(QString::fromLatin1(scramble(text, offset)), plainLine);
            QCOMPARE(unscramble(plainLine.toLatin1()), text);
        }
    }

    void pieces()
    {
        constexpr int kOffset = 99;
        const QByteArray text = QByteArray("0123456789").repeated(kPieceBytes / 4);
        QByteArray line = lineHeader(text.size(), kOffset);
        for (int start = 0; start < text.size(); start += 2 * kPieceBytes)
            line += lineBody(text.mid(start, 2 * kPieceBytes), kOffset);
        QCOMPARE(line, scramble(QString::fromLatin1(text), kOffset));
        QCOMPARE(lineHeader(kMaxTextBytes, kOffset), QByteArray("fffffffa63"));
    }

    void received_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("text");
        row("empty line → error", QByteArray(), "~ERR");
        row("seven characters", QByteArray("0000007"), "~ERR");
        row("header 16, line of 12", QByteArray("000000100000"), "~ERR");
        row("header is not hexadecimal", QByteArray("0000001g001c180470"), "~ERR");
        row("header with a sign", QByteArray("+000001200"), "~ERR");
        row("header of all ones", QByteArray("ffffffff00"), "~ERR");
        row("header alone", QByteArray("00000008"), "");
        row("one digit of offset", QByteArray("000000091"), "");
        row("capital digits", QByteArray("000000120324602F45"), "AB");
        row("capital header", QByteArray("0000000A07"), "");
        row("odd character at the end", QByteArray("00000013001c1804701"), "AB");
        row("offset not hexadecimal is 0", QByteArray("00000012xy1c180470"), "AB");
        // 0 combined with M is M, and "MUI=" decodes to "1B".
        row("pair not hexadecimal is 0", QByteArray("0000001200zz180470"), "1B");
        row("pair with one hexadecimal digit is 0", QByteArray("00000012001/180470"), "1B");
        // The body beyond the key is plain Base64: "QU" "[I", where "[" is skipped.
        row("character outside Base64 is skipped", QByteArray("00000012c851555b49"), "AB");
        row("text continues after such a character", QByteArray("0000001cc851557b4a4452413d3d"), "ABCD");
        row("no UTF-8", QByteArray("00000012c82f773d3d"), QString(QChar(QChar::ReplacementCharacter)));
    }

    void received()
    {
        QFETCH(QByteArray, line);
        QTEST(unscramble(line), "text");
    }
};

QTEST_APPLESS_MAIN(TestScrambling)
#include "tst_scrambling.moc"
