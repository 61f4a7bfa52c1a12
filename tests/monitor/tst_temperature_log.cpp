// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_log.h"

#include "monitor/plain_history.h"
#include "rows.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

#include <initializer_list>

namespace {

const QDateTime kMoment(QDate(2026, 11, 15), QTime(0, 36, 7));
const QByteArray kMomentRecord = QByteArrayLiteral(";,0!E(!J"); // drive 0 at 41 degrees

/// A record whose six bytes of time hold `moment` (year - 2000 first), of drive 0.
QByteArray record(std::initializer_list<int> moment, char temperature)
{
    QByteArray bytes;
    for (const int value : moment)
        bytes += char(value + 33);
    return bytes + '!' + temperature;
}

/// The records of one day at ten, eleven and twelve o'clock.
QByteArray threeRecords()
{
    return record({26, 11, 15, 10, 0, 0}, 'a') + record({26, 11, 15, 11, 0, 0}, 'b') +
           record({26, 11, 15, 12, 0, 0}, 'c');
}

} // namespace

class TestTemperatureLog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_path = temperatureLogIn(m_folder.path() + QLatin1Char('/'));
        QFile::remove(m_path);
    }

    void append_data()
    {
        QTest::addColumn<int>("device");
        QTest::addColumn<int>("celsius");
        QTest::addColumn<QByteArray>("lastBytes");
        row("ordinary", 0, 41, QByteArray("!J"));
        row("last ASCII characters", 94, 94, QByteArray("\x7f\x7f"));
        row("coldest", 1, -33, QByteArray("\"\0", 2));
        row("colder than any character", 1, -34, QByteArray("\"?"));
        row("no byte of any code page", 1, 7000, QByteArray("\"?"));
        row("no character at all", 1, 70000, QByteArray("\"?"));
    }

    void append()
    {
        QFETCH(int, device);
        QFETCH(int, celsius);
        appendTemperature(m_path, {device, celsius}, kMoment);
        QCOMPARE(read().left(6), QByteArray(";,0!E("));
        QTEST(read().mid(6), "lastBytes");
    }

    void appendGrowsTheFile()
    {
        write(threeRecords());
        appendTemperature(m_path, {0, 41}, kMoment);
        QCOMPARE(read(), threeRecords() + kMomentRecord);
    }

    void tornRecord()
    {
        write(threeRecords() + ";,0!E");
        appendTemperature(m_path, {0, 41}, kMoment);
        QCOMPARE(read(), threeRecords() + kMomentRecord);
    }

    /// "C:/" names no directory on a system without drive letters, and the current directory may not get a
    /// log.
    void relativePath()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        appendTemperature(QStringLiteral("temperature.log"), {0, 41}, kMoment);
        const bool written = QFile::exists(m_path);
        write(threeRecords());
        const QString text =
            temperatureHistory(QStringLiteral("temperature.log"), QStringLiteral("000101000000"),
                               QStringLiteral("991231235959"));
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(!written);
        QCOMPARE(text, QString());
    }

    void period_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("from");
        QTest::addColumn<QString>("to");
        QTest::addColumn<QString>("temperatures"); // the last character of each record that comes back
        const QByteArray three = threeRecords();
        row("missing file", QByteArray(), "000101000000", "991231235959", "");
        row("all", three, "261115100000", "261115120000", "abc");
        row("one more after the end", three, "261115100000", "261115103000", "ab");
        row("from the second on", three, "261115100001", "261115235959", "bc");
        row("ends before the first record", three, "261114000000", "261114235959", "a");
        row("after the last record", three, "261115120001", "261116000000", "");
        row("ends before it begins", three, "261115113000", "261115103000", "");
        row("torn last record", three.chopped(1), "261115100000", "261115235959", "ab");
        row("texts without a date", three, "", "abc", "a");
        row("start without a date", three, "", "261115235959", "abc");
        row("clock set back ends it early", three + three, "261115113000", "261115115959", "c");
        row("clock set back within the period", three + three, "261115110000", "261115120000", "bcbc");
        row("31 February is before any date", record({26, 2, 31, 0, 0, 0}, 'x') + three, "260101000000",
            "261115235959", "abc");
        row("25 o'clock is midnight", record({26, 11, 15, 25, 0, 0}, 'x') + three, "261115000000",
            "261115103000", "xab");
        row("temperature beyond ASCII", three.left(7) + char(0xE9) + three, "261115100000", "261115235959",
            QStringLiteral("\uFFFDabc"));
        row("year beyond ASCII ends it", char(0xE9) + three.mid(1), "261115100000", "261115235959", "a");
    }

    void period()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, from);
        QFETCH(QString, to);
        if (!file.isEmpty())
            write(file);
        const QString history = temperatureHistory(m_path, from, to);
        QString temperatures;
        for (int i = 7; i < history.size(); i += 8)
            temperatures += history.at(i);
        QCOMPARE(history.size(), 8 * temperatures.size());
        QTEST(temperatures, "temperatures");
    }

    void likeThePlainWalk_data()
    {
        QTest::addColumn<quint32>("seed");
        for (quint32 seed = 1; seed <= 40; ++seed)
            QTest::addRow("seed %u", seed) << seed;
    }

    /// Files longer than one chunk in which now and then any byte of a record is anything, a character of
    /// several bytes or a byte order mark among them.
    void likeThePlainWalk()
    {
        QFETCH(quint32, seed);
        QRandomGenerator random(seed);
        QByteArray file;
        QDateTime moment(QDate(2000 + random.bounded(90), 1 + random.bounded(12), 1), QTime(0, 0), Qt::UTC);
        const int count = seed % 4 == 0 ? 40000 : random.bounded(300);
        for (int i = 0; i < count; ++i) {
            moment = moment.addSecs(random.bounded(20000) - 500);
            const QDate date = moment.date();
            const QTime time = moment.time();
            QByteArray bytes = record(
                {date.year() - 2000, date.month(), date.day(), time.hour(), time.minute(), time.second()},
                char(33 + random.bounded(94)));
            if (random.bounded(16) == 0)
                bytes[random.bounded(8)] = char(random.bounded(256));
            if (random.bounded(200) == 0)
                bytes.replace(random.bounded(7), 2, "\xc3\xa9");
            if (random.bounded(400) == 0)
                bytes.replace(0, 3, "\xef\xbb\xbf");
            file += bytes;
        }
        file += QByteArray(random.bounded(8), '!');
        write(file);

        const auto randomMoment = [&] {
            if (random.bounded(8) == 0)
                return QString::number(random.generate64()).left(random.bounded(14));
            return moment.addSecs(-random.bounded(count * 10000 + 1))
                .toString(QStringLiteral("yyMMddhhmmss"));
        };
        for (int i = 0; i < 10; ++i) {
            const QString from = randomMoment();
            const QString to = randomMoment();
            QVERIFY2(temperatureHistory(m_path, from, to) == plain::temperatureHistory(file, from, to),
                     qPrintable(from + QLatin1Char(' ') + to));
        }
    }

private:
    void write(const QByteArray &bytes)
    {
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QCOMPARE(file.write(bytes), qint64(bytes.size()));
    }

    [[nodiscard]] QByteArray read() const
    {
        QFile file(m_path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QTemporaryDir m_folder;
    QString m_path;
};

QTEST_APPLESS_MAIN(TestTemperatureLog)
#include "tst_temperature_log.moc"
