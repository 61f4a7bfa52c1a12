// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"
#include "rows.h"

#include <QDir>
#include <QTest>

namespace {

/// Returns two drives, the second with further keys.
QByteArray twoDrives(const QByteArray &keys = "")
{
    return R"({"drives": [{"number": 0, "dump": "drives/st500nm0011.json"},
                          {"number": 1, "dump": "drives/st500nm0011.json")" +
           keys + "}]}";
}

/// Returns two drives. The first never answers a S.M.A.R.T. request; the second one returns data.
QJsonObject besideAHungDrive(const QByteArray &dump)
{
    return json(R"({"drives": [{"number": 0, "dump": "drives/st500nm0011.json", "smartDelayMs": 3600000},
                               {"number": 1, "dump": "drives/)" +
                dump + "\"}]}");
}

} // namespace

/// Various drives of the built service, as a console sees them.
class TestDrives : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// All drives are read, each under its own number.
    void everyRealDrive()
    {
        ServiceFixture service;
        const QDir folder(service.path("drives"));
        QJsonArray drives;
        QStringList expected;
        for (const QString &name : folder.entryList({"*.json"})) {
            const QJsonObject dump = json(contentOf(folder.filePath(name)));
            expected << QString("DEVINFO_OK,%1,%2~;%3~;")
                            .arg(QString::number(drives.size()), dump["model"].toString(),
                                 dump["serial"].toString());
            drives.append(QJsonObject{{"number", drives.size()}, {"dump", folder.filePath(name)}});
        }
        QCOMPARE(drives.size(), 52);
        service.writeMachine({{"drives", drives}});
        QVERIFY2(service.serve(), service.output());
        for (int i = 0; i < drives.size(); ++i) {
            const QString device = service.ask(QString("DEVINFO]![%1").arg(i));
            QVERIFY2(device.startsWith(expected.at(i)), qPrintable(device));
            QVERIFY(service.ask(QString("SMARTINFO]![%1").arg(i)).size() > 100);
        }
        QCOMPARE(service.stop(), 0);
    }

    void vanishedDrive_data()
    {
        QTest::addColumn<QByteArray>("machine"); // after the fault; before it there are two drives
        QTest::addColumn<QString>("count");      // of the next detection
        row("one drive removed",
            QByteArray(R"({"drives": [{"number": 0, "dump": "drives/st500nm0011.json"}]})"), "DEVCOUNT,1");
        row("no longer opens", twoDrives(R"(, "openError": 5)"), "DEVCOUNT,1");
        row("answers no request", twoDrives(R"(, "answers": [])"), "DEVCOUNT,1");
        row("all drives removed", QByteArray(R"({"drives": []})"), "DEVCOUNT,0");
    }

    /// A drive that is removed keeps its place and last values until the next detection.
    void vanishedDrive()
    {
        QFETCH(QByteArray, machine);
        QFETCH(QString, count);
        ServiceFixture service;
        service.setKeyValue("SMARTPollInterval", 1);
        service.writeMachine(json(twoDrives()));
        QVERIFY2(service.serve(), service.output());
        const QString last = service.ask("SMARTINFO]![1");
        QVERIFY(last.size() > 50);

        service.writeMachine(json(machine));
        const auto history = [&service] {
            return service.ask("GSTATD]![000101000000]![991231235959").size();
        };
        QTRY_VERIFY_WITH_TIMEOUT(service.output().contains("has failed since"), kPatienceMs);
        const int recorded = history();
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QCOMPARE(history() > recorded, count != "DEVCOUNT,0"); // of drives that are still read
        QCOMPARE(service.ask("DEVCOUNT"), "DEVCOUNT,2");
        QCOMPARE(service.ask("SMARTINFO]![1"), last);

        for (const QString &expected : {count, QString("DEVCOUNT,2")}) {
            QCOMPARE(service.ask("RESET"), "RESET_OK");
            QVERIFY(service.waitUntilReady());
            QCOMPARE(service.ask("DEVCOUNT"), expected);
            service.writeMachine(json(twoDrives()));
        }
        QCOMPARE(service.stop(), 0);
    }

    /// A hung drive costs its time limit; the other is read nevertheless, and a stop does not wait.
    void hungDrive()
    {
        ServiceFixture service;
        service.writeMachine(besideAHungDrive("st500nm0011.json"));
        QVERIFY2(service.start(), service.output());
        QCOMPARE(service.firstLine(), "DETECTING");
        QCOMPARE(service.stop(), 0);

        QVERIFY2(service.serve(), service.output());
        const QString empty = "SMARTINFO_OK,0,{}";
        QCOMPARE(service.ask("SMARTINFO]![0"), empty);
        const QString before = service.ask("SMARTINFO]![1");
        QVERIFY(before.size() > 100);
        service.writeMachine(json(twoDrives()));
        QCOMPARE(service.ask("RESET"), "RESET_OK");
        QVERIFY(service.waitUntilReady());
        QVERIFY(service.ask("SMARTINFO]![0") != empty);

        service.writeMachine(besideAHungDrive("toshiba-hdwe160.json"));
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QVERIFY(service.ask("SMARTINFO]![1") != before);
        service.writeMachine(json(twoDrives()));
        QCOMPARE(service.ask("REFRESH"), "REFRESH_OK");
        QCOMPARE(service.ask("SMARTINFO]![1"), before);
        QCOMPARE(service.stop(), 0);
    }

    /// An invalid machine file ends a program that would serve, with exit code 1 and the place of the error.
    void mistakeInTheMachineFile()
    {
        ServiceFixture service;
        service.writeMachine(json(R"({"drives": [{"number": 99}]})"));
        QVERIFY(!service.start());
        QVERIFY(service.process().state() == QProcess::NotRunning || service.process().waitForFinished());
        QCOMPARE(service.process().exitCode(), 1);
        QVERIFY2(service.output().contains("machine.json: drives[0].number: "), service.output());
    }
};

QTEST_GUILESS_MAIN(TestDrives)
#include "tst_drives.moc"
