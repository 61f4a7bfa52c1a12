// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/render/bars.h"
#include "console/render/chart.h"
#include "console/render/table.h"
#include "console/render/text.h"
#include "console/render/units.h"
#include "console/render/watch_screen.h"
#include "console/scan_progress.h"
#include "rows.h"

#include <QTest>

#include <algorithm>

using client::ScanState;
using client::ScanStatus;
using client::TemperatureRecord;

namespace {

constexpr quint64 kTerabyte = 1000204886016; // bytes

ScanStatus runningScan(qint32 percent, quint64 first, quint64 current)
{
    ScanStatus status;
    status.state = ScanState::Running;
    status.percent = percent;
    status.firstSector = first;
    status.currentSector = current;
    return status;
}

} // namespace

Q_DECLARE_METATYPE(client::ScanStatus)

class TestRender : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsByColumns_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("width");
        QTest::addColumn<QString>("shown");
        row("filled", QStringLiteral("ab"), 4, QStringLiteral("ab  "));
        row("exact", QStringLiteral("abcd"), 4, QStringLiteral("abcd"));
        row("cut", QStringLiteral("abcde"), 4, QStringLiteral("abc…"));
        row("wide, half a character left over", QStringLiteral("日本語"), 4, QStringLiteral("日… "));
        row("wide, exact", QStringLiteral("日本"), 4, QStringLiteral("日本"));
        row("beyond the first plane", QStringLiteral("💾💾💾"), 5, QStringLiteral("💾💾…"));
        row("combining marks", QStringLiteral("a\u0308b\u0308"), 3, QStringLiteral("a\u0308b\u0308 "));
    }

    void cutsByColumns()
    {
        QFETCH(QString, text);
        QFETCH(int, width);
        QFETCH(QString, shown);
        QCOMPARE(render::padded(text, width), shown);
    }

    void shrinksWhatMayShrink()
    {
        render::Table table;
        table.addColumn(QStringLiteral("No"), render::Align::Right);
        table.addColumn(QStringLiteral("Model"), render::Align::Left, render::Table::Shrink::Yes);
        table.addColumn(QStringLiteral("Size"), render::Align::Right);
        table.addRow(
            {{QStringLiteral("0")}, {QStringLiteral("A drive with a long name")}, {QStringLiteral("1 TB")}});
        QCOMPARE(table.lines({false, false, 20}), QStringList({QStringLiteral("No  Model       Size"),
                                                               QStringLiteral(" 0  A drive w…  1 TB")}));
        QCOMPARE(table.lines({}).last(), QStringLiteral(" 0  A drive with a long name  1 TB"));
        // Narrower than can be: the rest of the line stays, rather than numbers being cut.
        QCOMPARE(table.lines({false, false, 5}).last(), QStringLiteral(" 0  A dri…  1 TB"));
    }

    void paintsNothingWithoutColour()
    {
        QCOMPARE(painted(QStringLiteral("x"), render::Colour::Bad, {}), QStringLiteral("x"));
        QCOMPARE(painted(QStringLiteral("x"), render::Colour::Warning, {true, true, 80}),
                 QStringLiteral("\033[33mx\033[0m"));
    }

    void sizes_data()
    {
        QTest::addColumn<quint64>("bytes");
        QTest::addColumn<QString>("text");
        row("nothing", quint64(0), QStringLiteral("0 B"));
        row("below a kilobyte", quint64(999), QStringLiteral("999 B"));
        row("a kilobyte", quint64(1000), QStringLiteral("1.00 kB"));
        row("rounds into the next unit", quint64(999600000), QStringLiteral("1.00 GB"));
        row("two digits", quint64(99949), QStringLiteral("99.9 kB"));
        row("rounds to three digits", quint64(99950), QStringLiteral("100 kB"));
        row("terabyte drive", kTerabyte, QStringLiteral("1.00 TB"));
        row("the largest number", ~quint64(0), QStringLiteral("18.4 EB"));
    }

    void sizes()
    {
        QFETCH(quint64, bytes);
        QFETCH(QString, text);
        QCOMPARE(render::sizeText(bytes), text);
    }

    void durations_data()
    {
        QTest::addColumn<qint64>("seconds");
        QTest::addColumn<QString>("text");
        row("seconds", qint64(59), QStringLiteral("59 s"));
        row("minutes", qint64(180), QStringLiteral("3 min"));
        row("minutes and seconds", qint64(185), QStringLiteral("3 min 05 s"));
        row("hours", qint64(3900), QStringLiteral("1 h 05 min"));
        row("days", qint64(2 * 86400 + 5 * 3600), QStringLiteral("2 d 5 h"));
    }

    void durations()
    {
        QFETCH(qint64, seconds);
        QFETCH(QString, text);
        QCOMPARE(render::durationText(seconds), text);
    }

    void intervals_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<qint64>("milliseconds"); // -1: refused
        row("bare", QStringLiteral("90"), qint64(90000));
        row("minutes", QStringLiteral("3m"), qint64(180000));
        row("hours", QStringLiteral("2 h"), qint64(7200000));
        row("unknown unit", QStringLiteral("3d"), qint64(-1));
        row("negative", QStringLiteral("-3"), qint64(-1));
        row("empty", QString(), qint64(-1));
    }

    void intervals()
    {
        QFETCH(QString, text);
        QFETCH(qint64, milliseconds);
        QCOMPARE(render::parseInterval(text).value_or(-1), milliseconds);
    }

    void bars_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("expected");
        row("empty", render::progressBar(0, 4), QStringLiteral("░░░░"));
        row("an eighth of a column", render::progressBar(1.0 / 32, 4), QStringLiteral("▏░░░"));
        row("half", render::progressBar(0.5, 4), QStringLiteral("██░░"));
        row("beyond full", render::progressBar(1.5, 4), QStringLiteral("████"));
        row("trend", render::sparkline({40, 20, 27, 34}, 3, 5), QStringLiteral("▁▄█"));
        row("noise stays low", render::sparkline({20, 21, 20}, 8, 7), QStringLiteral("▁▂▁"));
        row("no values", render::sparkline({}, 8, 7), QString());
    }

    void bars()
    {
        QFETCH(QString, shown);
        QFETCH(QString, expected);
        QCOMPARE(shown, expected);
    }

    void surfaceMap_data()
    {
        QTest::addColumn<ScanStatus>("status");
        QTest::addColumn<QString>("map"); // of a drive of 1000 sectors in ten cells
        row("never scanned", ScanStatus(), QStringLiteral("░░░░░░░░░░"));
        row("half", runningScan(50, 0, 499), QStringLiteral("█████░░░░░"));
        row("a part in the middle", runningScan(50, 300, 599), QStringLiteral("░░░███░░░░"));
        ScanStatus bad = runningScan(90, 0, 899);
        bad.badRanges = {{200, 200}, {399, 400}};
        row("bad sectors", bad, QStringLiteral("██▚▚▚████░"));
        ScanStatus beyond = runningScan(100, 0, 5000);
        beyond.badRanges = {{4000, 5000}};
        row("beyond the drive's end", beyond, QStringLiteral("█████████▚"));
    }

    void surfaceMap()
    {
        QFETCH(ScanStatus, status);
        QFETCH(QString, map);
        QCOMPARE(render::surfaceMap(status, 1000, 10, {}), map);
    }

    void chartShowsGaps()
    {
        const QDateTime start(QDate(2026, 11, 15), QTime(8, 0));
        QVector<TemperatureRecord> records;
        for (const auto &[minute, temperature] :
             {std::pair<qint64, int>{0, 30}, {1, 31}, {4, 34}, {4, 33}, {5, 30}})
            records.append({start.addSecs(60 * minute), 0, temperature});
        records.append({start.addSecs(180), 0, std::nullopt}); // lost on the way, and out of order
        std::swap(records[2], records.last());
        std::swap(records[4], records.last());
        const QStringList lines = render::temperatureChart(records, 8 + 6, 2);
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0), QStringLiteral("  34 °C     █ "));
        QCOMPARE(lines.at(1), QStringLiteral("  30 °C ▁▄  █▁"));
        QVERIFY(lines.at(2).contains(QStringLiteral("2026-11-15 08:00:00")));
        QVERIFY(render::temperatureChart({}, 80, 10).isEmpty());
    }

    void rate()
    {
        RateMeter meter;
        meter.sample(0, runningScan(0, 0, 0));
        QVERIFY(!meter.bytesPerSecond());
        meter.sample(1000, runningScan(0, 0, 200000));
        QCOMPARE(meter.bytesPerSecond().value_or(0), 102400000.0);
        meter.sample(2000,
                     runningScan(0, 0, 200000)); // it has stalled: the rate falls, not to nothing at once
        QVERIFY(meter.bytesPerSecond().value_or(0) < 102400000.0);
        meter.sample(3000, runningScan(0, 0, 10)); // begun anew
        QVERIFY(!meter.bytesPerSecond());
    }

    void timeLeft_data()
    {
        QTest::addColumn<ScanStatus>("status");
        QTest::addColumn<qint64>(
            "seconds"); // of a drive of 1000001 sectors at 512000 bytes a second; -1: not known
        row("whole drive, below a percent", runningScan(0, 0, 5000), qint64(995));
        row("whole drive", runningScan(25, 0, 250000), qint64(750));
        row("a part of the drive", runningScan(50, 0, 50000), qint64(50));
        row("a part, below a percent", runningScan(0, 0, 50000), qint64(-1));
        row("beyond any drive's end", runningScan(100, 0, ~quint64(0) / 2), qint64(0));
        ScanStatus ended = runningScan(100, 0, 1000000);
        ended.state = ScanState::Idle;
        row("ended", ended, qint64(-1));
    }

    void timeLeft()
    {
        QFETCH(ScanStatus, status);
        QFETCH(qint64, seconds);
        QCOMPARE(secondsLeft(status, 1000001, 512000).value_or(-1), seconds);
    }

    void watchScreenFits_data()
    {
        QTest::addColumn<int>("drives");
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("firstRow");
        QTest::addColumn<int>("shownFirst");
        QTest::addColumn<int>("shownLast");
        row("one drive", 1, 80, 24, 0, 0, 0);
        row("no drive", 0, 80, 24, 0, -1, -1);
        row("forty drives", 40, 80, 24, 0, 0, 18);
        row("forty drives, scrolled beyond the end", 40, 80, 24, 99, 21, 39);
        row("forty drives, large screen", 40, 200, 50, 0, 0, 39);
        row("small screen", 40, 60, 6, 3, 3, 3);
    }

    void watchScreenFits()
    {
        QFETCH(int, drives);
        QFETCH(int, columns);
        QFETCH(int, rows);
        QFETCH(int, firstRow);
        QFETCH(int, shownFirst);
        QFETCH(int, shownLast);
        render::WatchState state;
        client::Drive drive;
        drive.model = QStringLiteral("A model with a name of forty characters.");
        drive.serial = QStringLiteral("A serial number of 20");
        drive.capacity = kTerabyte;
        state.drives = QVector<client::Drive>(drives, drive);
        state.temperatures = QVector<QVector<int>>(drives, {30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41});
        state.scans = {runningScan(50, 0, 100)};
        state.scans.first().badRanges = {{40, 47}};
        const QStringList lines = render::watchScreen(state, rows, firstRow, {false, true, columns});
        QVERIFY(lines.size() <= rows);
        QVector<int> numbers;
        for (const QString &line : lines) {
            QVERIFY2(render::columns(line) <= columns, qPrintable(line));
            if (line.contains(QStringLiteral("A mod")))
                numbers.append(line.trimmed().section(QLatin1Char(' '), 0, 0).toInt());
        }
        QCOMPARE(numbers.isEmpty() ? -1 : numbers.first(), shownFirst);
        QCOMPARE(numbers.isEmpty() ? -1 : numbers.last(), shownLast);
        QCOMPARE(lines.join(QLatin1Char('\n')).contains(QLatin1String("1 bad")), shownFirst == 0);
    }

    void watchScreenTellsOfSilence()
    {
        render::WatchState state;
        state.drives = QVector<client::Drive>(1);
        state.answered = QDateTime(QDate(2026, 11, 15), QTime(8, 0));
        state.problem = QStringLiteral("connection refused");
        QCOMPARE(render::watchScreen(state, 24, 0, {false, true, 80}).at(1),
                 QStringLiteral("connection refused (last answer 2026-11-15 08:00:00)"));
    }
};

QTEST_APPLESS_MAIN(TestRender)
#include "tst_render.moc"
