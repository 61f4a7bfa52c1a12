// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_history.h"

#include "files.h"
#include "monitor/plain_history.h"
#include "rows.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>

namespace {

/// Records of 2026-11-15 at 10:00, 11:00 and 12:00.
const QByteArray kThree = ";,0+!!!a;,0,!!!b;,0-!!!c";

const QString kAlways[] = {"000101000000", "991231235959"};

/// Sizes so small that a few records make several blocks and slices.
TemperatureHistory::Sizes smallSizes()
{
    return {2, 3, 1000000};
}

HistoryPeriod period(const QString &from, const QString &to)
{
    return {parseDateTime(from), parseDateTime(to)};
}

HistoryReader readerOf(TemperatureHistory &history, const QString &from, const QString &to)
{
    std::optional<HistoryReader> reader;
    history.find(period(from, to), [&reader](HistoryReader found) { reader = std::move(found); });
    for (const QDeadlineTimer deadline(60000); !reader && !deadline.hasExpired();)
        QCoreApplication::processEvents();
    return reader.value_or(HistoryReader());
}

QString textOf(TemperatureHistory &history, const QString &from, const QString &to)
{
    HistoryReader reader = readerOf(history, from, to);
    QByteArray text;
    for (QByteArray piece = reader.next(); !piece.isEmpty(); piece = reader.next())
        text += piece;
    return text.size() == reader.textBytes() ? QString::fromUtf8(text)
                                             : QStringLiteral("announced otherwise");
}

/// Returns the last character of each record.
QString temperatures(const QString &history)
{
    QString characters;
    for (int i = 7; i < history.size(); i += 8)
        characters += history.at(i);
    return characters;
}

} // namespace

class TestTemperatureHistory : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { QFile::remove(m_path); }

    void periods_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("temperatures");
        row("missing file", QByteArray(), "000101000000", "991231235959", "");
        row("whole period → all records", kThree, "261115100000", "261115120000", "abc");
        row("one more after the end", kThree, "261115100000", "261115103000", "ab");
        row("period starts at the second record", kThree, "261115100001", "261115235959", "bc");
        row("ends before the first record", kThree, "261114000000", "261114235959", "a");
        row("after the last record", kThree, "261115120001", "261116000000", "");
        row("ends before it begins", kThree, "261115113000", "261115103000", "");
        row("torn last record", kThree.chopped(1), "261115100000", "261115235959", "ab");
        row("texts without a date", kThree, "", "abc", "a");
        row("start without a date", kThree, "", "261115235959", "abc");
        row("clock set back ends it early", kThree + kThree, "261115113000", "261115115959", "c");
        row("clock set back within the period", kThree + kThree, "261115110000", "261115120000", "bcbc");
        row("31 February is before any date", ";#@!!!!x" + kThree, "260101000000", "261115235959", "abc");
        row("25 o'clock is midnight", ";,0:!!!x" + kThree, "261115000000", "261115103000", "xab");
        row("temperature beyond ASCII", kThree.left(7) + char(0xE9) + kThree, "261115100000", "261115235959",
            "\uFFFDabc");
        row("year beyond ASCII ends it", char(0xE9) + kThree.mid(1), "261115100000", "261115235959", "a");
        row("more than is read at a time", kThree.left(8).repeated(4000) + kThree.mid(8), "261115100000",
            "261115110000", QString(4000, u'a') + u'b' + u'c');
    }

    void periods()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, from);
        QFETCH(QString, to);
        if (!file.isEmpty())
            write(file);
        for (const auto &sizes : {TemperatureHistory::Sizes(), smallSizes()}) {
            TemperatureHistory history(m_path, sizes, m_workers);
            QTEST(temperatures(textOf(history, from, to)), "temperatures");
        }
    }

    /// Records in random order, some of them without a valid date or beyond ASCII.
    void anyOrder()
    {
        QRandomGenerator random(1);
        const auto moment = [&random] {
            return QString::asprintf("261115%02d%02d00", random.bounded(24), random.bounded(3));
        };
        QByteArray file;
        for (int i = 0; i < 60; ++i) {
            QByteArray record = kThree.left(8);
            record[3] = char(33 + random.bounded(26));
            record[4] = char(33 + random.bounded(3));
            if (random.bounded(20) == 0)
                record[random.bounded(8)] = char(random.bounded(256));
            file += record;
        }
        write(file);
        TemperatureHistory history(m_path, smallSizes(), m_workers);
        for (int i = 0; i < 200; ++i) {
            const QString from = moment();
            const QString to = moment();
            QCOMPARE(textOf(history, from, to), plain::temperatureHistory(file, from, to));
        }
    }

    void changedLog_data()
    {
        QTest::addColumn<QByteArray>("log");
        QTest::addColumn<bool>("isReplaced");
        row("overwritten in place", kThree.mid(16) + kThree.left(16), false);
        row("replaced by a file in another order", kThree.mid(16) + kThree.left(16), true);
        row("cut short", kThree.left(8), false);
        row("overwritten in place by a longer log", kThree + kThree, false);
        row("removed, no new file", QByteArray(), true);
    }

    /// Another program changes the log between two queries; then the service appends a record.
    void changedLog()
    {
        QFETCH(QByteArray, log);
        QFETCH(bool, isReplaced);
        write(kThree);
        TemperatureHistory history(m_path, smallSizes(), m_workers);
        QCOMPARE(temperatures(textOf(history, kAlways[0], kAlways[1])), "abc");
        const FileStamp before = fileStamp(m_path);
        if (isReplaced)
            QVERIFY(QFile::rename(m_path, m_folder.filePath("old")));
        if (!log.isEmpty())
            QTRY_VERIFY((write(log), fileStamp(m_path) != before)); // a file system's clock is coarse
        QFile::remove(m_folder.filePath("old"));
        QCOMPARE(textOf(history, kAlways[0], kAlways[1]), QString::fromLatin1(log));

        history.append({{0, 41}}, QDateTime(QDate(2026, 11, 16), QTime(0, 0)));
        QCOMPARE(textOf(history, kAlways[0], kAlways[1]), QLatin1String(log) + ";,1!!!!J");
    }

    void logThatCannotBeReadIsReported()
    {
        QVERIFY(QDir().mkdir(m_path));
        TemperatureHistory history(m_path, {}, m_workers);
        QTest::ignoreMessage(QtWarningMsg,
                             QRegularExpression(QStringLiteral("has failed since .*temperature.log: ")));
        QCOMPARE(textOf(history, kAlways[0], kAlways[1]), QString());
        QVERIFY(QDir().rmdir(m_path));
    }

    void recordsAppendedWhileIndexing()
    {
        write(kThree + kThree);
        TemperatureHistory history(m_path, smallSizes(), m_workers);
        history.prepare();
        history.append({{0, 41}}, QDateTime(QDate(2026, 11, 16), QTime(0, 0)));
        QCOMPARE(temperatures(textOf(history, kAlways[0], kAlways[1])), "abcabcJ");
    }

    /// The text becomes shorter than announced: a reader must not add other bytes.
    void logTruncatedDuringARead()
    {
        write(kThree.repeated(2000));
        TemperatureHistory history(m_path, {}, m_workers);
        HistoryReader reader = readerOf(history, kAlways[0], kAlways[1]);
        QCOMPARE(reader.textBytes(), 2000 * kThree.size());
        QVERIFY(!reader.next().isEmpty());
        QVERIFY(QFile::resize(m_path, 100));
        QCOMPARE(reader.next(), QByteArray());
    }

    void tooLongForOneReply()
    {
        write(kThree + kThree + kThree);
        TemperatureHistory::Sizes sizes = smallSizes();
        sizes.maxTextBytes = 40; // the newest three blocks, of which the last has one record
        TemperatureHistory history(m_path, sizes, m_workers);
        QCOMPARE(temperatures(textOf(history, kAlways[0], kAlways[1])), "bcabc");
    }

private:
    void write(const QByteArray &bytes) const { writeFile(m_path, bytes); }

    Workers m_workers;
    QTemporaryDir m_folder;
    const QString m_path = m_folder.filePath("temperature.log");
};

QTEST_GUILESS_MAIN(TestTemperatureHistory)
#include "tst_temperature_history.moc"
