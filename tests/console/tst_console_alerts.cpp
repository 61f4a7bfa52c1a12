// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/alerts.h"
#include "console/help.h"
#include "console/render/table.h"
#include "rows.h"

#include <QJsonDocument>

namespace {

QJsonObject object(const char *text)
{
    return QJsonDocument::fromJson(text).object();
}

QString cellOf(const client::Columns<QJsonObject> &columns, const char *heading, const QJsonObject &row)
{
    for (const auto &column : columns) {
        if (column.heading == QLatin1String(heading))
            return column.cellOfRow(row).text;
    }
    return {};
}

} // namespace

/// Replies about alarms, and how they are shown.
class TestConsoleAlerts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void findings_data()
    {
        QTest::addColumn<QJsonObject>("finding");
        QTest::addColumn<QString>("state");
        QTest::addColumn<QString>("detail");
        row("temperature",
            object(R"({"kind": "temperature", "severity": "warning", "value": 57, "limit": 55})"), "warning",
            QString::fromUtf8("57 °C (limit 55)"));
        row("attribute that is acknowledged",
            object(R"({"kind": "attribute", "severity": "critical", "acknowledged": true, "id": 5, "value": 4,
                       "threshold": 36, "name": "Reallocated sector count"})"),
            "acknowledged", "5 at 4 (threshold 36): Reallocated sector count");
        row("growth",
            object(
                R"({"kind": "growth", "severity": "warning", "id": 197, "baseline": 0, "raw": 281474976710655,
                       "name": "Current pending sector count"})"),
            "warning", "197 from 0 to 281474976710655: Current pending sector count");
        row("unreadable", object(R"({"kind": "unreadable", "severity": "critical"})"), "critical",
            "not readable");
        row("unknown attribute",
            object(R"({"kind": "growth", "severity": "warning", "id": 7, "name": null})"), "warning",
            "7 from - to -: -");
    }

    void findings()
    {
        QFETCH(QJsonObject, finding);
        QTEST(cellOf(client::findingColumns(), "State", finding), "state");
        QTEST(cellOf(client::findingColumns(), "Finding", finding), "detail");
    }

    /// The drive, its state and the numbers are not cut.
    void narrowScreen()
    {
        const QJsonObject finding =
            object(R"({"number": 0, "model": "M", "serial": "WD-WCC7K5ABCDEF", "kind": "growth",
                       "severity": "warning", "id": 197, "baseline": 3, "raw": 7, "acknowledged": true,
                       "name": "Current pending sector count", "since": "2026-11-15T10:00:00Z"})");
        const QStringList lines =
            render::tableLines(client::findingColumns(), QVector<QJsonObject>{finding}, {false, true, 80});
        const QString line = lines.value(1);
        QVERIFY2(line.size() <= 80, qPrintable(line));
        QVERIFY2(line.contains("WD-WCC7K5ABCDEF  acknowledged  197 from 3 to 7"), qPrintable(line));
    }

    void replies_data()
    {
        QTest::addColumn<QString>("reply");
        QTest::addColumn<int>("count"); // -1: not a reply to this request
        row("two findings acknowledged → 2", "X-ACK_OK,2", 2);
        row("no finding matches → 0", "X-ACK_OK,0", 0);
        row("count that is not a number", "X-ACK_OK,x", -1);
        row("reply to another request", "X-FORGET_OK", -1);
    }

    void replies()
    {
        QFETCH(QString, reply);
        QTEST(client::requests::acknowledge({}, {}, {}).parse(reply).value_or(-1), "count");
    }

    void serviceWithoutAlarms()
    {
        const auto failed = [](client::FailureKind kind) {
            return client::alertsOf(client::Failure{kind, {}});
        };
        QCOMPARE(failed(client::FailureKind::Refused)->document, object(R"({"supported": false})"));
        QVERIFY(!failed(client::FailureKind::Refused)->isSupported);
        QVERIFY(!failed(client::FailureKind::TimedOut));
    }

    void explanationsFitTheScreen()
    {
        const QString text = help::explanations({{"Name: text", QString("word ").repeated(20)}});
        const QStringList lines = text.split(u'\n');
        QCOMPARE(lines.size(), 3);
        QCOMPARE(lines.first(), "Name: text");
        QVERIFY(lines.at(1).startsWith("      word") && lines.at(1).size() <= 80);
        QVERIFY(lines.at(2).startsWith("      word"));
    }
};

QTEST_APPLESS_MAIN(TestConsoleAlerts)
#include "tst_console_alerts.moc"
