// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/requests.h"

#include "rows.h"

namespace {

request::Fields fields(const QString &items)
{
    return request::Fields({"WORD", items});
}

} // namespace

/// The fields with a format of their own; plain numbers and texts are covered by the tests of the commands.
class TestRequests : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void scheduleChange_data()
    {
        QTest::addColumn<QString>("items");
        QTest::addColumn<QString>("schedule"); // device, kind, day, date and time
        row("weekly schedule", "1~;3~;6~;260304050607~;x", "1 3 6 2026-03-04 05:06:07");
        row("fifth item empty", "1~;1~;0~;991231235959~;", "1 1 0 2099-12-31 23:59:59");
        row("no date", "1~;2~;0~;000000050607~;0", "1 2 0  05:06:07");
        row("no time of day", "1~;2~;0~;260304250607~;0", "1 2 0 2026-03-04 ");
        row("minutes missing: no time of day", "-1~;2~;0~;26030405~;0", "-1 2 0 2026-03-04 ");
        row("no item → refused", "", "refused");
        row("four items", "1~;3~;6~;260304050607", "refused");
        row("six items", "1~;3~;6~;260304050607~;~;", "refused");
    }

    void scheduleChange()
    {
        QFETCH(QString, items);
        const auto change = request::scheduleChange(fields(items));
        QString shown = "refused";
        if (change)
            shown = QString("%1 %2 %3 ")
                        .arg(change->device)
                        .arg(int(change->schedule.kind))
                        .arg(change->schedule.weekday) +
                    change->schedule.date.toString(Qt::ISODate) + u' ' +
                    change->schedule.time.toString(Qt::ISODate);
        QTEST(shown, "schedule");
    }

    void mailTest()
    {
        const QString items = "2525~;1~;a@b~;c@d~;mail~;Hello~;user~;secret~;first\nsecond";
        for (const QString &accepted : {items, items + "~;not sent"}) {
            const auto test = request::mailTest(fields(accepted)).value();
            QCOMPARE(test.port, quint16(2525));
            QVERIFY(test.needAuth);
            QCOMPARE(QStringList(
                         {test.from, test.to, test.server, test.subject, test.user, test.password, test.text})
                         .join(u'|'),
                     "a@b|c@d|mail|Hello|user|secret|first\nsecond");
        }
        QVERIFY(!request::mailTest(fields(items.section("~;", 0, 7))));
    }
};

QTEST_APPLESS_MAIN(TestRequests)
#include "tst_requests.moc"
