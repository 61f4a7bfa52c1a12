// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/failure.h"
#include "console/client/line_reader.h"

#include <QTest>

using client::LineReader;

class TestLineReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesLinesCutAtEveryByte();
    void noticesWhatIsNoLine_data();
    void noticesWhatIsNoLine();
    void plainText_data();
    void plainText();
    void visible_data();
    void visible();
};

namespace {

/// "VER" is "VkVS" in Base64; with offset 0 all four are combined with the key's first character, 'M'.
const QByteArray kLine = QByteArrayLiteral("00000012001b261b1e");

} // namespace

void TestLineReader::takesLinesCutAtEveryByte()
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

void TestLineReader::noticesWhatIsNoLine_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("another protocol") << QByteArray("220 mail.example.org");
    QTest::newRow("capital digits") << QByteArray("0000001A");
    QTest::newRow("shorter than its header") << QByteArray("00000009");
    QTest::newRow("announces a gigabyte") << QByteArray("40000000");
    QTest::newRow("ends too early") << QByteArray("00000012001b\r\n");
    QTest::newRow("ends too late") << kLine + "00\r\n";
    QTest::newRow("only a line feed") << kLine + "\n\n";
}

void TestLineReader::noticesWhatIsNoLine()
{
    QFETCH(QByteArray, bytes);
    LineReader reader;
    reader.append(bytes);
    QVERIFY(!reader.takeLine());
    QVERIFY(reader.isBroken());
}

void TestLineReader::plainText_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("text"); // null: no honest line
    QTest::newRow("honest") << kLine << "VER";
    QTest::newRow("no hexadecimal body") << QByteArray("00000012001b26zz1e") << QString();
    QTest::newRow("no Base64") << QByteArray("00000012001b261b64") << QString();
    QTest::newRow("odd length") << QByteArray("00000013001b261b1e0") << QString();
    QTest::newRow("no offset") << QByteArray("0000000azz") << QString();
}

void TestLineReader::plainText()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, text);
    const auto result = client::plainText(line);
    QCOMPARE(result.has_value(), !text.isNull());
    QCOMPARE(result.value_or(QString()), text);
}

void TestLineReader::visible_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("shown");
    QTest::newRow("harmless") << QStringLiteral("Größe 日本 °C") << QStringLiteral("Größe 日本 °C");
    QTest::newRow("terminal sequence") << QStringLiteral("\033[2J") << QStringLiteral("\\u{1b}[2J");
    QTest::newRow("line end") << QStringLiteral("a\r\nb") << QStringLiteral("a\\u{d}\\u{a}b");
    QTest::newRow("control beyond ASCII") << QString(QChar(0x9b)) << QStringLiteral("\\u{9b}");
    QTest::newRow("direction mark") << QString(QChar(0x202e)) << QStringLiteral("\\u{202e}");
}

void TestLineReader::visible()
{
    QFETCH(QString, text);
    QFETCH(QString, shown);
    QCOMPARE(client::visible(text), shown);
}

QTEST_APPLESS_MAIN(TestLineReader)
#include "tst_line_reader.moc"
