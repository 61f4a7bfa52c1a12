// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"
#include "rows.h"

#include <QFile>
#include <QJsonDocument>
#include <QTest>

#include <array>

namespace {

constexpr int kPatienceMs = 60000;

/// What a run of halvexctl came to.
struct Outcome
{
    int exitCode = -1; ///< -1 when it did not end by itself
    QByteArray output;
    QByteArray complaint;

    [[nodiscard]] QJsonDocument json() const { return QJsonDocument::fromJson(output); }
};

Outcome runConsole(const ServiceFixture &service, const QStringList &arguments)
{
    QProcess process;
    process.setProcessEnvironment(service.environment());
    process.start(QStringLiteral(HALVEX_CONSOLE_PROGRAM), arguments);
    Outcome outcome;
    if (process.waitForFinished(kPatienceMs) && process.exitStatus() == QProcess::NormalExit)
        outcome.exitCode = process.exitCode();
    outcome.output = process.readAllStandardOutput();
    outcome.complaint = process.readAllStandardError();
    return outcome;
}

QStringList words(const QString &line)
{
    return line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// A drive whose S.M.A.R.T. data take so long that detection lasts while a console looks at it.
QJsonObject slowDrive()
{
    QJsonObject drive = realDrive(0, QStringLiteral("st500nm0011.json"));
    drive.insert(QStringLiteral("smartDelayMs"), 5000);
    return drive;
}

} // namespace

/// halvexctl against the built service, as a script runs it.
class TestConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QJsonObject small = realDrive(1, QStringLiteral("st500nm0011.json"));
        small.insert(QStringLiteral("capacity"), 64 * 1024 * 1024);
        small.insert(QStringLiteral("badSectors"), QJsonArray{QJsonArray{1000, 1007}});
        m_shared.writeMachine(
            {{QStringLiteral("drives"), QJsonArray{realDrive(0, QStringLiteral("st500nm0011.json")), small}},
             {QStringLiteral("accounts"),
              QJsonArray{QJsonObject{{QStringLiteral("name"), QStringLiteral("Operator")},
                                     {QStringLiteral("privilege"), 2}}}}});
        QVERIFY2(m_shared.serve(), m_shared.output());
    }

    void cleanupTestCase() { QCOMPARE(m_shared.stop(), 0); }

    void carriesOut_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QByteArray>("output"); // a part of it
        row("status", "status", QByteArray("ST500NM0011"));
        row("info", "info 1", QByteArray("67.1 MB (67108864 bytes)"));
        row("smart", "smart 0", QByteArray("Temperature"));
        row("volumes", "volumes --json", QByteArray("[\n]\n"));
        row("temperatures", "temperatures 0 --csv", QByteArray("time,temperatureCelsius\n20"));
        row("count", "count", QByteArray("2\n"));
        row("scans", "scan", QByteArray("never scanned"));
        row("users", "users", QByteArray("Operator  Admin"));
        row("login", "login Operator --password-file /dev/null", QByteArray("rights 111"));
        row("intervals", "intervals", QByteArray("drives every 3 min, volumes every 5 min"));
        row("hosts", "hosts", QByteArray("local socket"));
        row("refresh", "refresh", QByteArray());
        row("raw", "raw DEVCOUNT", QByteArray("DEVCOUNT,2\n"));
        row("raw without reply", "raw BLABLA", QByteArray());
    }

    void carriesOut()
    {
        QFETCH(QString, line);
        QFETCH(QByteArray, output);
        const Outcome outcome = runConsole(m_shared, words(line));
        QVERIFY2(outcome.exitCode == 0, outcome.complaint);
        QVERIFY2(outcome.output.contains(output), outcome.output);
        QVERIFY2(!outcome.output.contains('\033'), "no colours without a terminal");
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("line");
        row("no such drive", "smart 7");
        row("scan of no such drive", "scan start 7");
        row("scan beyond the drive", "scan start 1 --last 131072");
        row("stopping what does not run", "scan stop 0");
        row("schedule for no such drive", "schedule set 7 daily 03:30");
        row("watch without a terminal", "watch");
    }

    void refuses()
    {
        QFETCH(QString, line);
        const Outcome outcome = runConsole(m_shared, words(line));
        QCOMPARE(outcome.exitCode, 1);
        QVERIFY2(outcome.complaint.startsWith("halvexctl: "), outcome.complaint);
        QCOMPARE(outcome.output, QByteArray());
    }

    void tellsTheSameOverBothTransports()
    {
        const QString port = QString::number(m_shared.port());
        const Outcome local = runConsole(m_shared, words(QStringLiteral("status --json")));
        const Outcome tcp = runConsole(m_shared, words(QStringLiteral("--port %1 status --json").arg(port)));
        QVERIFY2(local.exitCode == 0, local.complaint);
        QVERIFY2(tcp.exitCode == 0, tcp.complaint);
        const QJsonArray drives = local.json().object().value(QLatin1String("drives")).toArray();
        QCOMPARE(drives.size(), 2);
        QCOMPARE(tcp.json().object().value(QLatin1String("drives")).toArray(), drives);
    }

    void showsAttributesAsTheDriveHasThem()
    {
        QFile file(drivesFixturePath() + QStringLiteral("/st500nm0011.json"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QJsonObject dump = QJsonDocument::fromJson(file.readAll()).object();
        const QJsonArray recorded =
            dump.value(QLatin1String("smart")).toObject().value(QLatin1String("attributes")).toArray();
        const Outcome outcome = runConsole(m_shared, words(QStringLiteral("smart 0 --json")));
        QVERIFY2(outcome.exitCode == 0, outcome.complaint);
        const QJsonArray shown = outcome.json().object().value(QLatin1String("attributes")).toArray();
        QCOMPARE(shown.size(), recorded.size());
        for (int i = 0; i < shown.size(); ++i) {
            const QJsonObject want = recorded.at(i).toObject();
            const QJsonObject have = shown.at(i).toObject();
            QCOMPARE(have.value(QLatin1String("id")), want.value(QLatin1String("id")));
            QCOMPARE(have.value(QLatin1String("value")), want.value(QLatin1String("current")));
            QCOMPARE(have.value(QLatin1String("worst")), want.value(QLatin1String("worst")));
            QCOMPARE(have.value(QLatin1String("threshold")), want.value(QLatin1String("threshold")));
            if (want.value(QLatin1String("id")).toInt() != 194) // the service reduces it to degrees
                QCOMPARE(have.value(QLatin1String("raw")), want.value(QLatin1String("raw")));
        }
    }

    void changesOneSettingAndKeepsTheOthers()
    {
        const auto settings = [this] {
            return runConsole(m_shared, words(QStringLiteral("settings --json"))).json().object();
        };
        QFile password(m_shared.path(QStringLiteral("password")));
        QVERIFY(password.open(QIODevice::WriteOnly) && password.write("s3cret\n") > 0);
        password.close();
        const Outcome first =
            runConsole(m_shared, {QStringLiteral("settings"), QStringLiteral("set"),
                                  QStringLiteral("smtpSubj=Über 80 °C"), QStringLiteral("wTemp=50"),
                                  QStringLiteral("--password-file"), password.fileName()});
        QVERIFY2(first.exitCode == 0, first.complaint);
        QJsonObject expected = settings();
        QCOMPARE(expected.value(QLatin1String("smtpSubj")).toString(), QStringLiteral("Über 80 °C"));
        QCOMPARE(expected.value(QLatin1String("wTemp")).toInt(), 50);
        QCOMPARE(expected.value(QLatin1String("smtpPass")).toBool(), true);

        const Outcome second = runConsole(m_shared, words(QStringLiteral("settings set cTemp=70")));
        QVERIFY2(second.exitCode == 0, second.complaint);
        expected.insert(QStringLiteral("cTemp"), 70);
        QCOMPARE(settings(), expected);
    }

    void schedulesAScan()
    {
        const Outcome set = runConsole(m_shared, words(QStringLiteral("schedule set 1 weekly sunday 03:30")));
        QVERIFY2(set.exitCode == 0, set.complaint);
        const QJsonObject entry{{QStringLiteral("drive"), 1},
                                {QStringLiteral("kind"), QStringLiteral("weekly")},
                                {QStringLiteral("weekday"), QStringLiteral("sunday")},
                                {QStringLiteral("time"), QStringLiteral("03:30:00")}};
        QCOMPARE(
            runConsole(m_shared, words(QStringLiteral("schedule --json"))).json().array().at(1).toObject(),
            entry);

        QCOMPARE(runConsole(m_shared, words(QStringLiteral("schedule clear 1"))).exitCode, 0);
        const QJsonObject cleared =
            runConsole(m_shared, words(QStringLiteral("schedule --json"))).json().array().at(1).toObject();
        QCOMPARE(cleared.value(QLatin1String("kind")).toString(), QStringLiteral("none"));
    }

    void scansAndFindsTheBadSectors()
    {
        const Outcome start = runConsole(m_shared, words(QStringLiteral("scan start 1 --block 4096")));
        QVERIFY2(start.exitCode == 0, start.complaint);
        const Outcome followed = runConsole(m_shared, words(QStringLiteral("scan status 1 --follow --json")));
        QVERIFY2(followed.exitCode == 0, followed.complaint);
        const QJsonObject scan = followed.json().array().at(0).toObject();
        QCOMPARE(scan.value(QLatin1String("percent")).toInt(), 100);
        QCOMPARE(scan.value(QLatin1String("currentSector")).toInt(), 131071);
        QCOMPARE(scan.value(QLatin1String("badSectors")).toArray(), (QJsonArray{QJsonArray{1000, 1007}}));
    }

    void checksLevels_data()
    {
        QTest::addColumn<int>("temperature"); // of a drive in a service with the usual limits
        QTest::addColumn<int>("exitCode");
        row("fine", 54, 0);
        row("warning", 55, 3);
        row("critical", 65, 4);
    }

    void checksLevels()
    {
        QFETCH(int, temperature);
        QFETCH(int, exitCode);
        const QJsonObject attribute{{QStringLiteral("id"), 194},      {QStringLiteral("flags"), 2},
                                    {QStringLiteral("current"), 100}, {QStringLiteral("worst"), 100},
                                    {QStringLiteral("threshold"), 0}, {QStringLiteral("raw"), temperature}};
        const QJsonObject drive{
            {QStringLiteral("number"), 0},
            {QStringLiteral("model"), QStringLiteral("Hot drive")},
            {QStringLiteral("capacity"), 1024 * 1024},
            {QStringLiteral("smart"), QJsonObject{{QStringLiteral("attributes"), QJsonArray{attribute}}}}};
        ServiceFixture service;
        service.writeMachine({{QStringLiteral("drives"), QJsonArray{drive}}});
        QVERIFY2(service.serve(), service.output());
        const Outcome outcome = runConsole(service, words(QStringLiteral("status --check -q")));
        QCOMPARE(outcome.exitCode, exitCode);
        QCOMPARE(outcome.output, QByteArray());
    }

    void waitsForDetection()
    {
        ServiceFixture service;
        service.writeMachine({{QStringLiteral("drives"), QJsonArray{slowDrive()}}});
        QVERIFY2(service.start(), service.output());
        const Outcome impatient = runConsole(service, words(QStringLiteral("count")));
        QCOMPARE(impatient.exitCode, 2);
        QVERIFY2(impatient.complaint.contains("detecting drives"), impatient.complaint);
        const Outcome patient = runConsole(service, words(QStringLiteral("--wait 60 count")));
        QCOMPARE(patient.exitCode, 0);
        QCOMPARE(patient.output, QByteArray("1\n"));
    }

    /// The local socket hears one console at a time, and still each of many is answered, while one stays.
    void takesTurnsOnTheLocalSocket()
    {
        constexpr int kConsoles = 12;
        QJsonObject drive = realDrive(0, QStringLiteral("st500nm0011.json"));
        drive.insert(QStringLiteral("readDelayMs"), 100);
        ServiceFixture service;
        service.writeMachine({{QStringLiteral("drives"), QJsonArray{drive}}});
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(runConsole(service, words(QStringLiteral("scan start 0 --last 20000"))).exitCode, 0);
        const auto start = [&service](QProcess &process, const char *line) {
            process.setProcessEnvironment(service.environment());
            process.start(QStringLiteral(HALVEX_CONSOLE_PROGRAM), words(QLatin1String(line)));
        };
        QProcess lasting;
        start(lasting, "-t 60 scan status 0 --follow");
        std::array<QProcess, kConsoles> others;
        for (QProcess &other : others)
            start(other, "-t 60 smart 0");
        for (QProcess &other : others) {
            QVERIFY(other.waitForFinished(kPatienceMs));
            QVERIFY2(other.exitCode() == 0, other.readAllStandardError());
        }
        QVERIFY(lasting.waitForFinished(kPatienceMs));
        QVERIFY2(lasting.exitCode() == 0, lasting.readAllStandardError());
    }

    void saysThatTheServiceIsPaused()
    {
        ServiceFixture service;
        service.writeMachine({{QStringLiteral("drives"), QJsonArray()}});
        QVERIFY2(service.serve(), service.output());
        QVERIFY(service.pause());
        const Outcome outcome = runConsole(service, words(QStringLiteral("status")));
        QCOMPARE(outcome.exitCode, 2);
        QVERIFY2(outcome.complaint.contains("paused"), outcome.complaint);
    }

    void saysThatNobodyAnswers()
    {
        ServiceFixture service;
        service.writeMachine({{QStringLiteral("drives"), QJsonArray()}});
        QVERIFY2(service.serve(), service.output());
        QCOMPARE(runConsole(service, words(QStringLiteral("count"))).exitCode, 0);
        QCOMPARE(service.stop(), 0);
        for (const QString &where :
             {QStringLiteral("count"), QStringLiteral("count --port %1").arg(service.port())}) {
            const Outcome outcome = runConsole(service, words(where));
            QCOMPARE(outcome.exitCode, 2);
            QVERIFY2(outcome.complaint.contains("connection refused"), outcome.complaint);
        }
    }

private:
    ServiceFixture m_shared; ///< a healthy drive, and a small one with bad sectors
};

QTEST_GUILESS_MAIN(TestConsole)
#include "tst_console.moc"
