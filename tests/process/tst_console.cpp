// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"
#include "rows.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <array>

namespace {

void start(QProcess &process, const ServiceFixture &service, const QString &line)
{
    process.setProcessEnvironment(service.environment());
    process.start(QStringLiteral(HALVEX_CONSOLE_PROGRAM), line.split(' ', Qt::SkipEmptyParts));
}

/// Runs halvexctl, which has to end with the exit code, and to print, output before complaints, something
/// that matches the expression.
void run(const ServiceFixture &service, const QString &line, int exitCode, const QString &expression)
{
    QProcess process;
    start(process, service, line);
    QVERIFY(process.waitForFinished(kPatienceMs));
    const QByteArray text = process.readAllStandardOutput() + process.readAllStandardError();
    QVERIFY2(process.exitStatus() == QProcess::NormalExit && process.exitCode() == exitCode, text);
    const QRegularExpression expected(expression, QRegularExpression::DotMatchesEverythingOption);
    QVERIFY2(expected.match(QString::fromUtf8(text)).hasMatch(), text);
    QVERIFY2(!text.contains('\033'), "no colours without a terminal");
}

} // namespace

/// halvexctl against the built service, as a script runs it.
class TestConsole : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        m_service.writeMachine(json(R"({
            "drives": [{"number": 0, "dump": "drives/st500nm0011.json"},
                       {"number": 1, "dump": "drives/st500nm0011.json", "capacity": 67108864,
                        "badSectors": [[1000, 1007]]},
                       {"number": 2, "dump": "drives/st500nm0011.json", "readDelayMs": 100}],
            "accounts": [{"name": "Operator", "privilege": 2}]
        })"));
        QVERIFY2(m_service.serve(), m_service.output());
        QFile password(m_service.path("password"));
        QVERIFY(password.open(QIODevice::WriteOnly) && password.write("s3cret\n") > 0);
    }

    void cleanupTestCase() { QCOMPARE(m_service.stop(), 0); }

    /// Some rows rest on what those before them have changed.
    void session_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("text");
        const QString complaint = "\\Ahalvexctl: .*\n\\z";
        row("status", "status", 0, "ST500NM0011");
        row("over TCP", "--port PORT status", 0, "ST500NM0011");
        row("info", "info 1", 0, "67\\.1 MB \\(67108864 bytes\\)");
        row("smart", "smart 0", 0, "Temperature");
        row("no such drive", "smart 7", 1, complaint);
        row("volumes", "volumes --json", 0, "\\A\\[\n\\]\n\\z");
        row("temperatures", "temperatures 0 --csv", 0, "\\Atime,temperatureCelsius\n20");
        row("count", "count", 0, "\\A3\n\\z");
        row("users", "users", 0, "Operator  Admin");
        row("login", "login Operator --password-file /dev/null", 0, "rights 111");
        row("intervals", "intervals", 0, "drives every 3 min, volumes every 5 min");
        row("hosts", "hosts", 0, "local socket");
        row("refresh", "refresh", 0, "read anew");
        row("raw", "raw DEVCOUNT", 0, "\\ADEVCOUNT,3\n\\z");
        row("raw without reply", "raw BLABLA", 0, "\\A\\z");
        row("watch without a terminal", "watch", 1, complaint);

        row("fine", "status --check -q", 0, "\\A\\z");
        const QString settings = u8"settings set smtpSubj=\u00dcber wTemp=20 --password-file PASSWORD";
        row("some settings", settings, 0, "are stored");
        row("warning", "status --check -q", 3, "\\A\\z");
        row("one setting", "settings set cTemp=22", 0, "are stored");
        row("settings kept", "settings --json", 0,
            u8"\"cTemp\": 22,.*\"smtpPass\": true,.*\"smtpSubj\": \"\u00dcber\",.*\"wTemp\": 20");
        row("critical", "status --check -q", 4, "\\A\\z");

        row("schedule set", "schedule set 1 weekly sunday 03:30", 0, "every sunday at 03:30");
        row("schedule", "schedule --json", 0, "\"weekly\",.*\"03:30:00\",.*\"sunday\"");
        row("schedule cleared", "schedule clear 1", 0, "no scan");
        row("no schedule", "schedule --json", 0, "\\A((?!weekly).)*\\z");
        row("schedule for no such drive", "schedule set 7 daily 03:30", 1, complaint);

        row("scans", "scan", 0, "never scanned");
        row("scan of no such drive", "scan start 7", 1, complaint);
        row("scan beyond the drive", "scan start 1 --last 131072", 1, complaint);
        row("stopping what does not run", "scan stop 0", 1, complaint);
        row("scan", "scan start 1 --block 4096", 0, "sectors 0 to 131071 of drive 1");
        row("scan followed", "scan status 1 --follow --json", 0,
            "\\[\\s*1000,\\s*1007\\s*\\]\\s*\\],.*\"currentSector\": 131071,.*\"percent\": 100");
    }

    void session()
    {
        QFETCH(QString, line);
        QFETCH(int, exitCode);
        QFETCH(QString, text);
        line.replace("PORT", QString::number(m_service.port()));
        line.replace("PASSWORD", m_service.path("password"));
        run(m_service, line, exitCode, text);
    }

    /// The local socket hears one console at a time, and still each of many is answered, while one stays.
    void takesTurnsOnTheLocalSocket()
    {
        run(m_service, "scan start 2 --last 20000", 0, "");
        std::array<QProcess, 13> consoles;
        start(consoles.front(), m_service, "-t 60 scan status 2 --follow");
        for (auto other = consoles.begin() + 1; other != consoles.end(); ++other)
            start(*other, m_service, "-t 60 smart 0");
        for (QProcess &console : consoles) {
            QVERIFY(console.waitForFinished(kPatienceMs));
            QVERIFY2(console.exitCode() == 0, console.readAllStandardError());
        }
    }

    void saysWhyNobodyServes()
    {
        ServiceFixture service;
        service.writeMachine(json(R"({"drives": [
            {"number": 0, "dump": "drives/st500nm0011.json", "smartDelayMs": 5000}]})"));
        QVERIFY2(service.start(), service.output());
        run(service, "count", 2, "\\Ahalvexctl: .*detecting drives");
        run(service, "--wait 60 count", 0, "\\A1\n");
        QVERIFY(service.pause());
        run(service, "status", 2, "\\Ahalvexctl: .*paused");
        QCOMPARE(service.stop(), 0);
        run(service, "count", 2, "\\Ahalvexctl: .*connection refused");
        run(service, QString("count --port %1").arg(service.port()), 2, "\\Ahalvexctl: .*connection refused");
    }

private:
    ServiceFixture m_service; ///< a healthy drive, a small one with bad sectors, and a slow one
};

QTEST_GUILESS_MAIN(TestConsole)
#include "tst_console.moc"
