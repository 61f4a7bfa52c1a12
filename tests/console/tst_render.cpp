// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/failure.h"
#include "console/render/bars.h"
#include "console/render/chart.h"
#include "console/render/table.h"
#include "console/render/text.h"
#include "console/render/units.h"
#include "console/render/watch_screen.h"
#include "console/scan_progress.h"
#include "rows.h"

using client::ScanState;
using client::ScanStatus;
using client::TemperatureRecord;

namespace {

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

class TestRender : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void shows_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("expected");
        const auto visible = [](const char *text) { return client::visible(QString::fromUtf8(text)); };
        row("harmless", visible("Größe 日本 °C"), "Größe 日本 °C");
        row("terminal sequence", visible("\033[2J"), "\\u{1b}[2J");
        row("control beyond ASCII", visible("\u009b"), "\\u{9b}");
        row("direction mark", visible("\u202e"), "\\u{202e}");

        const auto padded = [](const char *text) { return render::padded(QString::fromUtf8(text), 4); };
        row("cut", padded("abcde"), "abc…");
        row("wide, half a character left over", padded("日本語"), "日… ");
        row("beyond the first plane", padded("💾💾💾"), "💾… ");
        row("combining marks", padded("a\u0308b\u0308"), "a\u0308b\u0308  ");

        row("in colour", painted(QStringLiteral("x"), render::Colour::Warning, {true, true, 80}),
            "\033[33mx\033[0m");

        row("rounds into the next unit", render::sizeText(999600000), "1.00 GB");
        row("rounds to three digits", render::sizeText(99950), "100 kB");
        row("the largest number", render::sizeText(~quint64(0)), "18.4 EB");

        row("minutes and seconds", render::durationText(185), "3 min 05 s");
        row("hours", render::durationText(3900), "1 h 05 min");
        row("days", render::durationText(2 * 86400 + 5 * 3600), "2 d 5 h");

        const auto interval = [](const char *text) {
            return QString::number(render::parseInterval(QLatin1String(text)).value_or(-1));
        };
        row("bare interval", interval("90"), "90000");
        row("interval in minutes", interval("3m"), "180000");
        row("interval in hours", interval("2 h"), "7200000");

        // Of a drive of 1000001 sectors at 512000 bytes a second; -1: not known.
        const auto left = [](const ScanStatus &status) {
            return QString::number(secondsLeft(status, 1000001, 512000).value_or(-1));
        };
        row("left of a drive, below a percent", left(runningScan(0, 0, 5000)), "995");
        row("left of a drive", left(runningScan(25, 0, 250000)), "750");
        row("left of a part", left(runningScan(50, 0, 50000)), "50");
        row("left beyond any drive's end", left(runningScan(100, 0, ~quint64(0) / 2)), "0");

        row("an eighth of a column", render::progressBar(1.0 / 32, 4), "▏░░░");
        row("trend", render::sparkline({40, 20, 27, 34}, 3, 5), "▁▄█");
        row("no values", render::sparkline({}, 8, 7), "");
        row("noise stays low", render::sparkline({20, 21, 20}, 8, 7), "▁▂▁");

        const auto map = [](ScanStatus status, const QVector<client::BadRange> &bad = {}) {
            status.badRanges = bad;
            return render::surfaceMap(status, 1000, 10, {});
        };
        row("a part in the middle", map(runningScan(50, 300, 599)), "░░░███░░░░");
        row("bad sectors", map(runningScan(90, 0, 899), {{200, 200}, {399, 400}}), "██▚▚▚████░");
        row("beyond the drive's end", map(runningScan(100, 0, 5000), {{4000, 5000}}), "█████████▚");

        render::WatchState state;
        state.answered = QDateTime(QDate(2026, 11, 15), QTime(8, 0));
        state.problem = QStringLiteral("connection refused");
        row("watching what has fallen silent", render::watchScreen(state, 24, 0, {false, true, 80}).at(1),
            "connection refused (last answer 2026-11-15 08:00:00)");
    }

    void shows()
    {
        QFETCH(QString, shown);
        QTEST(shown, "expected");
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

    void chartShowsGaps()
    {
        const QDateTime start(QDate(2026, 11, 15), QTime(8, 0));
        QVector<TemperatureRecord> records;
        const std::pair<qint64, std::optional<int>> values[] = {{0, 30}, {1, 31}, {3, {}},
                                                                {4, 33}, {4, 34}, {5, 30}};
        for (const auto &[minute, temperature] : values)
            records.append({start.addSecs(60 * minute), 0, temperature});
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
        meter.sample(2000, runningScan(0, 0, 200000)); // stalled: the rate falls, not to nothing at once
        QVERIFY(meter.bytesPerSecond().value_or(0) < 102400000.0);
        meter.sample(3000, runningScan(0, 0, 10)); // begun anew
        QVERIFY(!meter.bytesPerSecond());
    }

    void watchScreenFits_data()
    {
        QTest::addColumn<int>("drives");
        QTest::addColumn<int>("columns");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("firstRow");
        QTest::addColumn<QString>("shown"); // the first and the last drive
        row("one drive", 1, 80, 24, 0, "0 to 0");
        row("forty drives", 40, 80, 24, 0, "0 to 18");
        row("forty drives, scrolled beyond the end", 40, 80, 24, 99, "21 to 39");
        row("small screen", 40, 60, 6, 3, "3 to 3");
    }

    void watchScreenFits()
    {
        QFETCH(int, drives);
        QFETCH(int, columns);
        QFETCH(int, rows);
        QFETCH(int, firstRow);
        render::WatchState state;
        client::Drive drive;
        drive.model = QStringLiteral("A model with a name of forty characters.");
        drive.serial = QStringLiteral("A serial number of 20");
        drive.capacity = 1000204886016;
        state.drives = QVector<client::Drive>(drives, drive);
        state.temperatures = QVector<QVector<int>>(drives, {30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41});
        state.scans = {runningScan(50, 0, 100)};
        state.scans.first().badRanges = {{40, 47}};
        const QStringList lines = render::watchScreen(state, rows, firstRow, {false, true, columns});
        QVERIFY(lines.size() <= rows);
        QStringList numbers;
        for (const QString &line : lines) {
            QVERIFY2(render::columns(line) <= columns, qPrintable(line));
            if (line.contains(QStringLiteral("A mod")))
                numbers.append(line.trimmed().section(u' ', 0, 0));
        }
        QTEST(numbers.value(0) + QStringLiteral(" to ") + numbers.value(numbers.size() - 1), "shown");
        QCOMPARE(lines.join(u'\n').contains(QLatin1String("1 bad")), numbers.value(0) == QLatin1String("0"));
    }
};

QTEST_APPLESS_MAIN(TestRender)
#include "tst_render.moc"
