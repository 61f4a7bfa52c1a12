// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_log.h"

#include "files.h"
#include "rows.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace {

const QDateTime kMoment(QDate(2026, 11, 15), QTime(0, 36, 7));

/// Records of 2026-11-15 at 10:00, 11:00 and 12:00.
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
        row("41 °C → one character", nothing, 0, 41, time + "!J");
        row("after an incomplete record", kThree + ";,0!E", 0, 41, kThree + time + "!J");
        row("last ASCII characters", nothing, 94, 94, time + "\x7f\x7f");
        row("hotter than any character", nothing, 1, 95, time + "\"\x7f");
        row("-33 °C, the coldest that can be stored", nothing, 1, -33, time + QByteArray("\"\0", 2));
        row("-34 °C → stored as -33 °C", nothing, 1, -34, time + QByteArray("\"\0", 2));
        row("drive index above any character", kThree, 95, 41, kThree);
    }

    void append()
    {
        QFETCH(QByteArray, before);
        QFETCH(int, device);
        QFETCH(int, celsius);
        if (!before.isEmpty())
            writeFile(m_path, before);
        QVERIFY(appendTemperatures(m_path, {{device, celsius}}, kMoment));
        QTEST(contentOf(m_path), "after");
    }

    /// "C:/" is not absolute on a system without drive letters; no log is written to the current directory.
    void relativePath()
    {
        const QString before = QDir::currentPath();
        QVERIFY(QDir::setCurrent(m_folder.path()));
        const auto appended = appendTemperatures("temperature.log", {{0, 41}}, kMoment);
        QVERIFY(QDir::setCurrent(before));
        QVERIFY(!appended);
        QVERIFY(!QFile::exists(m_path));
    }

private:
    QTemporaryDir m_folder;
    QString m_path;
};

QTEST_APPLESS_MAIN(TestTemperatureLog)
#include "tst_temperature_log.moc"
