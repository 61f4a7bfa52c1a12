// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/alert_timeline.h"

#include "rows.h"

namespace {

QStringList list(std::initializer_list<const char *> texts)
{
    QStringList result;
    for (const char *text : texts)
        result << QString::fromUtf8(text);
    return result;
}

/// Evaluates the timeline of the row and compares all messages.
void replay()
{
    QFETCH(Timeline, timeline);
    Machine machine;
    QStringList messages;
    for (const Step &step : qAsConst(timeline))
        messages << machine.evaluate(step);
    QTEST(messages, "messages");
}

} // namespace

class TestAlertPolicy : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findings_data()
    {
        QTest::addColumn<Timeline>("timeline");
        QTest::addColumn<QStringList>("messages");
        row("warm drive: one alert, ends 3 degrees below the limit",
            Timeline{celsius(0, 54), celsius(1, 55), celsius(2, 53), celsius(3, 52)},
            list({"1 alert warning Temperature=55 Celsius (131 Fahrengeit)", "3 recovery Recovered"}));
        row("warning becomes critical, falls back at 62 and is critical anew",
            Timeline{celsius(0, 64), celsius(1, 65), celsius(2, 63), celsius(3, 65), celsius(4, 62),
                     celsius(5, 65)},
            list({"0 alert warning Temperature=64 Celsius (147 Fahrengeit)",
                  "1 alert critical Temperature=65 Celsius (149 Fahrengeit)",
                  "5 alert critical Temperature=65 Celsius (149 Fahrengeit)"}));
        row("attribute at its threshold, ends after three evaluations above",
            Timeline{value(0, 20), value(1, 21), value(2, 21), value(3, 20), value(4, 21), value(5, 21),
                     value(6, 21)},
            list({"0 alert warning Parameter ID 5=20", "6 recovery Recovered"}));
        row("attribute falls back from critical after three evaluations",
            Timeline{value(0, 5), value(1, 6), value(2, 6), value(3, 6), value(4, 5)},
            list({"0 alert critical Parameter ID 5=5", "4 alert critical Parameter ID 5=5"}));
        row("attribute that jumps for two evaluations stays critical",
            Timeline{value(0, 5), value(1, 100), value(2, 6), value(3, 5)},
            list({"0 alert critical Parameter ID 5=5"}));
        row("raw value grows from zero, quiet for seven days, grows again",
            Timeline{raw(0, 0), raw(1, 1), raw(23, 1), raw(1 + 7 * 24, 1), raw(200, 1), raw(201, 3)},
            list({"1 alert warning Parameter ID 197 grew from 0 to 1", "169 recovery Recovered",
                  "201 alert warning Parameter ID 197 grew from 1 to 3"}));
        row("further growth prolongs a finding without another alert",
            Timeline{raw(0, 8), raw(1, 9), raw(2, 10), raw(24, 10)},
            list({"1 alert warning Parameter ID 197 grew from 8 to 9"}));
        row("a fallen raw value is the new baseline", Timeline{raw(0, 9), raw(1, 2), raw(2, 3)},
            list({"2 alert warning Parameter ID 197 grew from 2 to 3"}));
    }

    void findings() { replay(); }

    void unreadableDrives_data()
    {
        QTest::addColumn<Timeline>("timeline");
        QTest::addColumn<QStringList>("messages");
        row("three failed polls in a row",
            Timeline{at(0), read(1, ReadOutcome::Failed), read(2, ReadOutcome::Failed), at(3),
                     read(4, ReadOutcome::Failed), read(5, ReadOutcome::Failed),
                     read(6, ReadOutcome::NotPolled), read(7, ReadOutcome::Failed), at(8)},
            list({"7 alert critical Drive not readable", "8 recovery Recovered"}));
        row("a sleeping drive is not unreadable",
            Timeline{at(0), read(1, ReadOutcome::Failed), read(2, ReadOutcome::Failed),
                     read(3, ReadOutcome::Asleep), read(4, ReadOutcome::Failed)},
            list({}));
        row("a drive that was never read",
            Timeline{read(0, ReadOutcome::Failed), read(1, ReadOutcome::Failed), read(2, ReadOutcome::Failed),
                     missing(3)},
            list({}));
        row("a known drive that is missing, listed again and read",
            Timeline{at(0), missing(1), read(2, ReadOutcome::NotPolled), at(3)},
            list({"1 alert critical Drive not readable", "3 recovery Recovered"}));
    }

    void unreadableDrives() { replay(); }

    void repeats_data()
    {
        QTest::addColumn<Timeline>("timeline");
        QTest::addColumn<QStringList>("messages");
        row("reminders count from the last delivery",
            Timeline{celsius(0, 56), celsius(20, 66), celsius(24, 66), celsius(43, 66), celsius(44, 66)},
            list({"0 alert warning Temperature=56 Celsius (132 Fahrengeit)",
                  "20 alert critical Temperature=66 Celsius (150 Fahrengeit)",
                  "44 reminder critical Temperature=66 Celsius (150 Fahrengeit)"}));
        row("no alert counts as delivered while no channel is on",
            Timeline{silent(celsius(0, 56)), silent(celsius(30, 56)), celsius(31, 56),
                     silent(celsius(32, 30)), celsius(33, 30)},
            list({"31 alert warning Temperature=56 Celsius (132 Fahrengeit)"}));
        row("no reminder of an acknowledged finding",
            Timeline{celsius(0, 56), acknowledged(celsius(30, 56)), celsius(60, 60), celsius(90, 56)},
            list({"0 alert warning Temperature=56 Celsius (132 Fahrengeit)"}));
        row("acknowledged temperature rises by 5 degrees",
            Timeline{celsius(0, 56), acknowledged(celsius(1, 56)), celsius(2, 60), celsius(3, 61)},
            list({"0 alert warning Temperature=56 Celsius (132 Fahrengeit)",
                  "3 alert warning Temperature=61 Celsius (141 Fahrengeit)"}));
        row("acknowledged attribute falls lower",
            Timeline{value(0, 9), acknowledged(value(1, 9)), value(2, 10), value(3, 8)},
            list({"0 alert warning Parameter ID 5=9", "3 alert warning Parameter ID 5=8"}));
        row("acknowledged warning becomes critical",
            Timeline{celsius(0, 64), acknowledged(celsius(1, 64)), celsius(2, 65)},
            list({"0 alert warning Temperature=64 Celsius (147 Fahrengeit)",
                  "2 alert critical Temperature=65 Celsius (149 Fahrengeit)"}));
        row("acknowledged growth that continues",
            Timeline{raw(0, 1), raw(1, 2), acknowledged(raw(2, 2)), raw(40, 2), raw(41, 4)},
            list({"1 alert warning Parameter ID 197 grew from 1 to 2",
                  "41 alert warning Parameter ID 197 grew from 2 to 4"}));
        row("acknowledged finding that ended and returns",
            Timeline{celsius(0, 56), acknowledged(celsius(1, 52)), celsius(2, 56)},
            list({"0 alert warning Temperature=56 Celsius (132 Fahrengeit)", "1 recovery Recovered",
                  "2 alert warning Temperature=56 Celsius (132 Fahrengeit)"}));
        row("a stored delivery in the future counts as now",
            Timeline{celsius(24, 56), celsius(0, 56), celsius(23, 56), celsius(24, 56)},
            list({"24 alert warning Temperature=56 Celsius (132 Fahrengeit)",
                  "24 reminder warning Temperature=56 Celsius (132 Fahrengeit)"}));
    }

    void repeats() { replay(); }

    /// Polls every 3 minutes.
    void weekOfHeat()
    {
        constexpr int kPolls = 7 * 24 * 20;
        Machine machine;
        QStringList events;
        for (int poll = 0; poll <= kPolls; ++poll) {
            const double hours = poll / 20.0;
            for (const QString &message : machine.evaluate(celsius(hours, poll < kPolls ? 57 : 40)))
                events << message.section(u' ', 0, 1);
        }
        QCOMPARE(events.join(u','), "0 alert,24 reminder,48 reminder,72 reminder,96 reminder,"
                                    "120 reminder,144 reminder,168 recovery");
    }

    /// The drive's level remains that of its attribute; only the growth is reported.
    void oldFaultStaysQuietUntilItGrows()
    {
        Machine machine;
        const auto evaluate = [&machine](double hours, quint64 sectors) {
            Evaluation evaluation;
            evaluation.drives << evaluationOf(value(hours, 10));
            evaluation.drives[0].attributes[0].raw = sectors;
            return machine.evaluate(evaluation, hours).join(u';');
        };
        QCOMPARE(evaluate(0, 2624), "0 alert warning Parameter ID 5=10");
        acknowledge(machine.state.drives[0], machine.state.drives[0].findings[0]);
        for (int day = 1; day <= 365; ++day)
            QCOMPARE(evaluate(day * 24, 2624), QString());
        QCOMPARE(evaluate(9000, 2625), "9000 alert warning Parameter ID 5 grew from 2624 to 2625");
    }

    void alertListsAllFindingsOfAllDrives()
    {
        Machine machine;
        Evaluation evaluation;
        Step step = value(0, 4);
        step.celsius = 55;
        evaluation.drives << evaluationOf(step) << evaluationOf(celsius(0, 40));
        evaluation.drives[1].serial = "S2";
        evaluation.drives[1].deviceNumber = 8;
        machine.evaluate(evaluation, 0);
        evaluation.drives[0].temperatureCelsius = 53; // kept by hysteresis
        evaluation.drives[0].attributes[1].raw = 2;
        evaluation.drives.removeLast();
        QCOMPARE(machine.evaluate(evaluation, 1).join(u';'),
                 "1 alert critical Temperature=53 Celsius (127 Fahrengeit) Parameter ID 5=4 "
                 "Parameter ID 197 grew from 0 to 2 ID: 8 MODEL Drive not readable");
    }

    /// Two drives without a serial number are distinguished by their index.
    void drivesWithTheSameIdentity()
    {
        Machine machine;
        Evaluation evaluation;
        evaluation.drives << evaluationOf(raw(0, 5)) << evaluationOf(raw(0, 9));
        machine.evaluate(evaluation, 0);
        evaluation.drives[1].attributes[1].raw = 10;
        QCOMPARE(machine.evaluate(evaluation, 1).join(u';'),
                 "1 alert warning Parameter ID 197 grew from 9 to 10");
        std::swap(evaluation.drives[0], evaluation.drives[1]);
        evaluation.drives[0].serial = "S0"; // now unique: another drive
        machine.evaluate(evaluation, 2);
        QCOMPARE(machine.state.drives.size(), 3);
        QVERIFY(!machine.latest.drives.last().isListed);
    }

    void detectionDoesNotMakeDrivesMissing()
    {
        Machine machine;
        machine.evaluate(at(0));
        Evaluation empty;
        empty.isListComplete = false;
        QCOMPARE(machine.evaluate(empty, 1), QStringList());
        QCOMPARE(machine.state.drives.size(), 1);
    }

    void documentOfAnAlert()
    {
        Machine machine;
        machine.evaluate(raw(0, 1));
        machine.evaluate(raw(1, 3));
        AlertMessage message;
        message.level = Severity::Warning;
        message.drives = machine.latest.drives;
        const QJsonObject document = messageDocument(message, "text", "host", kStart);
        const char expected[] = R"({"event": "alert", "time": "2026-03-01T00:00:00Z", "host": "host",
            "level": "warning", "text": "text", "drives": [{"number": 0, "model": "MODEL", "serial": "S1",
            "level": "fine", "healthPercent": 100, "temperatureCelsius": 30, "findings": [{"kind": "growth",
            "severity": "warning", "id": 197, "name": "Current pending sector count", "value": 100,
            "threshold": 20, "raw": 3, "baseline": 1, "limit": null, "since": "2026-03-01T01:00:00Z"}]}]})";
        QCOMPARE(document, QJsonDocument::fromJson(expected).object());
    }
};

QTEST_APPLESS_MAIN(TestAlertPolicy)
#include "tst_alert_policy.moc"
