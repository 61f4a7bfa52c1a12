// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/failure.h"
#include "console/client/line_reader.h"
#include "rows.h"

#include <QTest>

using client::LineReader;

namespace {

/// "VER" is "VkVS" in Base64; with offset 0 all four are combined with the key's first character, 'M'.
const QByteArray kLine = QByteArrayLiteral("00000012001b261b1e");

} // namespace

class TestLineReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesLinesCutAtEveryByte()
    {
        const QByteArray wire = kLine + "\r\n" + kLine + "\r\n";
        for (int cut = 0; cut <= wire.size(); ++cut) {
            LineReader reader;
            int lines = 0;
            for (const QByteArray &part : {wire.left(cut), wire.mid(cut)}) {
                reader.append(part);
                while (const auto line = reader.takeLine()) {
                    QCOMPARE(*line, kLine);
                    ++lines;
                }
            }
            QCOMPARE(lines, 2);
            QVERIFY(!reader.isBroken());
            QVERIFY(reader.pending().isEmpty());
        }
    }

    void noticesWhatIsNoLine_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        row("another protocol", QByteArray("220 mail.example.org"));
        row("capital digits", QByteArray("0000001A"));
        row("shorter than its header", QByteArray("00000009"));
        row("announces a gigabyte", QByteArray("40000000"));
        row("ends too early", QByteArray("00000012001b\r\n"));
        row("ends too late", kLine + "00\r\n");
        row("only a line feed", kLine + "\n\n");
    }

    void noticesWhatIsNoLine()
    {
        QFETCH(QByteArray, bytes);
        LineReader reader;
        reader.append(bytes);
        QVERIFY(!reader.takeLine());
        QVERIFY(reader.isBroken());
    }

    void plainText_data()
    {
        QTest::addColumn<QByteArray>("line");
        QTest::addColumn<QString>("text"); // null: no honest line
        row("honest", kLine, "VER");
        row("no hexadecimal body", QByteArray("00000012001b26zz1e"), QString());
        row("no Base64", QByteArray("00000012001b261b64"), QString());
        row("odd length", QByteArray("00000013001b261b1e0"), QString());
        row("no offset", QByteArray("0000000azz"), QString());
    }

    void plainText()
    {
        QFETCH(QByteArray, line);
        QFETCH(QString, text);
        const auto result = client::plainText(line);
        QCOMPARE(result.has_value(), !text.isNull());
        QCOMPARE(result.value_or(QString()), text);
    }

    void visible_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("shown");
        row("harmless", QStringLiteral("Größe 日本 °C"), QStringLiteral("Größe 日本 °C"));
        row("terminal sequence", QStringLiteral("\033[2J"), QStringLiteral("\\u{1b}[2J"));
        row("line end", QStringLiteral("a\r\nb"), QStringLiteral("a\\u{d}\\u{a}b"));
        row("control beyond ASCII", QString(QChar(0x9b)), QStringLiteral("\\u{9b}"));
        row("direction mark", QString(QChar(0x202e)), QStringLiteral("\\u{202e}"));
    }

    void visible()
    {
        QFETCH(QString, text);
        QFETCH(QString, shown);
        QCOMPARE(client::visible(text), shown);
    }
};

QTEST_APPLESS_MAIN(TestLineReader)
#include "tst_line_reader.moc"
