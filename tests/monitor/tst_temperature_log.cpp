// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_log.h"

#include "rows.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

const QDateTime kMoment(QDate(2026, 11, 15), QTime(0, 36, 7));

/// Of 2026-11-15 at ten, eleven and twelve o'clock.
const QByteArray kThree = ";,0+!!!a;,0,!!!b;,0-!!!c";

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
        QTest::addColumn<QByteArray>("before");
        QTest::addColumn<int>("device");
        QTest::addColumn<int>("celsius");
        QTest::addColumn<QByteArray>("after");
        const QByteArray nothing;
        const QByteArray time = ";,0!E(";
        row("ordinary", nothing, 0, 41, time + "!J");
        row("behind a torn record", kThree + ";,0!E", 0, 41, kThree + time + "!J");
        row("last ASCII characters", nothing, 94, 94, time + "\x7f\x7f");
        row("coldest", nothing, 1, -33, time + QByteArray("\"\0", 2));
        row("colder than any character", nothing, 1, -34, time + "\"?");
        row("no byte of any code page", nothing, 1, 7000, time + "\"?");
        row("no character at all", nothing, 1, 70000, time + "\"?");
    }

    void append()
    {
        QFETCH(QByteArray, before);
        QFETCH(int, device);
        QFETCH(int, celsius);
        if (!before.isEmpty())
            write(before);
        appendTemperature(m_path, {device, celsius}, kMoment);
        QTEST(read(), "after");
    }

    /// "C:/" names no directory on a system without drive letters, and the current directory may not get a
    /// log.
    void relativePath()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        appendTemperature(QStringLiteral("temperature.log"), {0, 41}, kMoment);
        const bool written = QFile::exists(m_path);
        write(kThree);
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
        row("missing file", QByteArray(), "000101000000", "991231235959", "");
        row("all", kThree, "261115100000", "261115120000", "abc");
        row("one more after the end", kThree, "261115100000", "261115103000", "ab");
        row("from the second on", kThree, "261115100001", "261115235959", "bc");
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
            QStringLiteral("\uFFFDabc"));
        constexpr int kMany = 100000; // more than are read at a time
        row("long", kThree.left(8).repeated(kMany) + kThree.mid(8), "261115100000", "261115110000",
            QString(kMany, u'a') + u'b' + u'c');
        row("year beyond ASCII ends it", char(0xE9) + kThree.mid(1), "261115100000", "261115235959", "a");
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
