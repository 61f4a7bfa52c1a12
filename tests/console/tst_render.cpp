// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"
#include "client/failure.h"
#include "client/units.h"
#include "console/commands/scan_report.h"
#include "console/render/bars.h"
#include "console/render/chart.h"
#include "console/render/table.h"
#include "console/render/text.h"
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

void compareShown()
{
    QFETCH(QString, shown);
    QTEST(shown, "expected");
}

} // namespace

Q_DECLARE_METATYPE(client::Level)

class TestRender : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void showsText_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("expected");
        const auto visible = [](const char *text) { return client::visible(QString::fromUtf8(text)); };
        row("printable text is unchanged", visible("Größe 日本 °C"), "Größe 日本 °C");
        row("terminal sequence", visible("\033[2J"), "\\u{1b}[2J");
        row("control beyond ASCII", visible("\u009b"), "\\u{9b}");
        row("direction mark", visible("\u202e"), "\\u{202e}");

        const auto padded = [](const char *text) { return render::padded(QString::fromUtf8(text), 4); };
        row("longer than its column", padded("abcde"), "abc…");
        row("wide characters, half of one left over", padded("日本語"), "日… ");
        row("characters beyond the first plane", padded("💾💾💾"), "💾… ");
        row("combining marks", padded("a\u0308b\u0308"), "a\u0308b\u0308  ");

        row("warning in colour", render::painted("x", client::Tone::Warning, {true, true, 80}),
            "\033[33mx\033[0m");

        row("rounds into the next unit", client::sizeText(999600000), "1.00 GB");
        row("rounds to three digits", client::sizeText(99950), "100 kB");
        row("the largest number", client::sizeText(~quint64(0)), "18.4 EB");

        row("duration in minutes", client::durationText(185), "3 min 05 s");
        row("duration in hours", client::durationText(3900), "1 h 05 min");
        row("duration in days", client::durationText(2 * 86400 + 5 * 3600), "2 d 5 h");

        const auto interval = [](const char *text) {
            return QString::number(client::parseInterval(QLatin1String(text)).value_or(-1));
        };
        row("bare interval", interval("90"), "90000");
        row("interval in hours", interval("2 h"), "7200000");
    }

    void showsText() { compareShown(); }

    void showsScans_data()
    {
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("expected");
        // A drive of 1000001 sectors at 512000 bytes a second; -1: unknown.
        const auto left = [](const ScanStatus &status) {
            return QString::number(secondsLeft(status, 1000001, 512000).value_or(-1));
        };
        row("remaining time below 1 %", left(runningScan(0, 0, 5000)), "995");
        row("remaining time of a drive", left(runningScan(25, 0, 250000)), "750");
        row("remaining time of a range", left(runningScan(50, 0, 50000)), "50");
        row("remaining time of an impossible range → 0", left(runningScan(100, 0, ~quint64(0) / 2)), "0");

        row("an eighth of a column", render::progressBar(1.0 / 32, 4), "▏░░░");
        row("trend of four values", render::sparkline({40, 20, 27, 34}, 3, 5), "▁▄█");
        row("trend of no values", render::sparkline({}, 8, 7), "");
        row("trend of one degree stays low", render::sparkline({20, 21, 20}, 8, 7), "▁▂▁");

        const auto map = [](ScanStatus status, const QVector<client::SectorRange> &bad = {}) {
            status.badRanges = bad;
            return render::surfaceMap(status, 1000, 10, {});
        };
        row("scanned part in the middle", map(runningScan(50, 300, 599)), "░░░███░░░░");
        row("map with bad sectors", map(runningScan(90, 0, 899), {{200, 200}, {399, 400}}), "██▚▚▚████░");
        row("map beyond the drive's end", map(runningScan(100, 0, 5000), {{4000, 5000}}), "█████████▚");
    }

    void showsScans() { compareShown(); }

    void watchHeader_data()
    {
        QTest::addColumn<QVector<client::Level>>("levels"); // of drives 0, 1, …
        QTest::addColumn<QString>("problem");
        QTest::addColumn<QString>("header");
        using client::Level;
        using Levels = QVector<Level>;
        row("service stopped answering", Levels{Level::Fine}, "connection refused",
            "connection refused (last answer 2026-11-15 08:00:00)");
        row("all rated drives fine", Levels{Level::Fine, Level::NotRated}, "", "all rated drives are fine");
        row("warning beside a critical drive", Levels{Level::Warning, Level::Fine, Level::Critical}, "",
            "critical: 2 M; warning: 0 M");
        row("more drives than the screen is wide", Levels(20, Level::Warning) + Levels{Level::Critical}, "",
            "1 critical, 20 warning; critical: 20 M; warning: 0 M, 1 M, 2 M, 3 M, 4 M, 5 M, …");
    }

    void watchHeader()
    {
        QFETCH(QVector<client::Level>, levels);
        QFETCH(QString, problem);
        render::WatchState state;
        state.answered = QDateTime(QDate(2026, 11, 15), QTime(8, 0));
        state.problem = problem;
        client::Drive drive;
        drive.model = "M";
        drive.monitored = 1;
        for (const client::Level level : levels) {
            drive.number = state.drives.size();
            drive.statusLevel = level;
            drive.smartState =
                level == client::Level::NotRated ? client::SmartState::NeverRead : client::SmartState::Read;
            state.drives.append(drive);
        }
        QTEST(render::watchScreen(state, 24, 0, {false, true, 80}).at(1), "header");
    }

    void followsRunningScansFirst()
    {
        client::Drive drive;
        drive.model = "M";
        drive.capacity = 512 * 1000;
        QVector<ScanReport> reports;
        for (drive.number = 0; drive.number < 30; ++drive.number)
            reports.append({{}, drive, {}});
        reports[29].status = runningScan(50, 0, 499);
        const QStringList lines = scanLines(reports, {false, false, 80}, true);
        QCOMPARE(lines.first(), "29  M, 512 kB");
        QCOMPARE(lines.size(), 3); // without the drives that were never scanned
        reports[29].status.badRanges = QVector<client::SectorRange>(200, {1000000, 1000007});
        const QStringList all = scanLines(reports, {false, true, 80});
        for (const QString &line : all)
            QVERIFY2(render::columns(line) <= 80, qPrintable(line));
        QVERIFY(all.last().endsWith("27, 28")); // no drive is cut off
        const QString piped = scanLines(reports, {}).join(u'\n');
        QCOMPARE(piped.count("1000000-1000007"), 200);
    }

    void powerOnHours_data()
    {
        QTest::addColumn<int>("unit");
        QTest::addColumn<qint64>("raw");
        QTest::addColumn<qint64>("hours"); // -1: none
        row("unknown unit → none", 0, qint64(100), qint64(-1));
        row("counter of hours", 1, qint64(100), qint64(100));
        row("counter of half minutes", 3, qint64(240), qint64(2));
        row("counter of seconds", 4, qint64(7199), qint64(1));
        row("a century", 1, qint64(876600), qint64(876600));
        row("above a century → none", 1, qint64(876601), qint64(-1));
        row("minutes in the upper bytes → none", 1, qint64(0x2100000064), qint64(-1));
    }

    void powerOnHours()
    {
        QFETCH(int, unit);
        QFETCH(qint64, raw);
        const PowerOnCounter counter{raw, PowerOnCounter::Unit(unit), true};
        QTEST(counter.hours().value_or(-1), "hours");
    }

    void documentsOfColumns()
    {
        client::Volume volume;
        volume.root = "a,\"b\"\033";
        volume.totalBytes = ~quint64(0);
        volume.freeBytes = 5;
        const QJsonObject object = toObject(client::volumeColumns(), volume);
        QCOMPARE(object.value("totalBytes"), QJsonValue("18446744073709551615"));
        QCOMPARE(object.value("freeBytes"), QJsonValue(5));
        QCOMPARE(toCsv(client::volumeColumns(), {volume}).last(),
                 "0,\"a,\"\"b\"\"\\u{1b}\",,,,18446744073709551615,5");
        client::ScanStatus scan = runningScan(50, 0, 100);
        scan.time = QDateTime(QDate(2026, 7, 15), QTime(3, 30), Qt::UTC);
        const QJsonObject running = toObject(client::scanColumns(QTimeZone("Europe/Berlin")), scan);
        QCOMPARE(running.value("started"), QJsonValue("2026-07-15T03:30:00+02:00"));
        QVERIFY(!running.contains("ended"));
        QVERIFY(toObject(client::driveColumns(), client::Drive()).value("level").isNull());
    }

    void cutsShrinkingColumns()
    {
        const QVector<render::Heading> headings{{"No", client::Layout::Right},
                                                {"Model", client::Layout::Shrinking},
                                                {"Size", client::Layout::Right}};
        const QVector<QVector<client::Cell>> rows{{{"0"}, {"A drive with a long name"}, {"1 TB"}}};
        QCOMPARE(render::tableLines(headings, rows, {false, false, 20}),
                 QStringList({"No  Model       Size", " 0  A drive w…  1 TB"}));
        QCOMPARE(render::tableLines(headings, rows, {}).last(), " 0  A drive with a long name  1 TB");
        // Too narrow: the line is longer than the screen, and numbers are complete.
        QCOMPARE(render::tableLines(headings, rows, {false, false, 5}).last(), " 0  A dri…  1 TB");
    }

    void chartShowsGaps()
    {
        const QDateTime start(QDate(2026, 11, 15), QTime(8, 0), Qt::UTC);
        QVector<TemperatureRecord> records;
        const std::pair<qint64, std::optional<int>> values[] = {{0, 30}, {1, 31}, {3, {}},
                                                                {4, 33}, {4, 34}, {5, 30}};
        for (const auto &[minute, temperature] : values)
            records.append({start.addSecs(60 * minute), 0, temperature});
        const QStringList lines = render::temperatureChart(records, 8 + 6, 2);
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.at(0), "  34 °C     █ ");
        QCOMPARE(lines.at(1), "  30 °C ▁▄  █▁");
        QVERIFY(lines.at(2).contains("2026-11-15 08:00:00"));
        QVERIFY(render::temperatureChart({}, 80, 10).isEmpty());
    }

    void rate()
    {
        RateMeter meter;
        meter.sample(0, runningScan(0, 0, 0));
        QVERIFY(!meter.bytesPerSecond());
        meter.sample(1000, runningScan(0, 0, 200000));
        QCOMPARE(meter.bytesPerSecond().value_or(0), 102400000.0);
        meter.sample(2000, runningScan(0, 0, 200000)); // stalled: the rate falls gradually
        QVERIFY(meter.bytesPerSecond().value_or(0) < 102400000.0);
        meter.sample(3000, runningScan(0, 0, 10)); // a new scan
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
        drive.model = "A model with a name of forty characters.";
        drive.serial = "A serial number of 20";
        drive.capacity = 1000204886016;
        for (drive.number = 0; drive.number < drives; ++drive.number)
            state.drives.append(drive);
        state.temperatures = QVector<QVector<int>>(drives, {30, 31, 32, 33, 34, 35, 36, 37, 38, 39, 40, 41});
        state.scans = {runningScan(50, 0, 100)};
        state.scans.first().badRanges = {{40, 47}};
        const QStringList lines = render::watchScreen(state, rows, firstRow, {false, true, columns});
        QVERIFY(lines.size() <= rows);
        QStringList numbers;
        for (const QString &line : lines) {
            QVERIFY2(render::columns(line) <= columns, qPrintable(line));
            if (line.contains("A mod"))
                numbers.append(line.trimmed().section(u' ', 0, 0));
        }
        QTEST(numbers.value(0) + " to " + numbers.value(numbers.size() - 1), "shown");
        QCOMPARE(lines.join(u'\n').contains("1 bad"), numbers.value(0) == "0");
    }
};

QTEST_APPLESS_MAIN(TestRender)
#include "tst_render.moc"
