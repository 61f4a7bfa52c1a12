// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
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

struct Outcome
{
    int exitCode = -1;
    QString output; ///< standard output, then standard error
};

/// Runs halvexctl with the words of `line`.
Outcome halvexctl(const ServiceFixture &service, const QString &line)
{
    QProcess process;
    start(process, service, line);
    if (!process.waitForFinished(kPatienceMs) || process.exitStatus() != QProcess::NormalExit)
        return {-1, "did not end by itself"};
    return {process.exitCode(),
            QString::fromUtf8(process.readAllStandardOutput() + process.readAllStandardError())};
}

bool matches(const QString &text, const QString &expression)
{
    const QRegularExpression expected(expression, QRegularExpression::DotMatchesEverythingOption);
    return expected.match(text).hasMatch() && !text.contains('\033'); // no colours without a terminal
}

} // namespace

/// Fails the calling test, at its own line, if halvexctl ends otherwise.
#define EXPECT(service, line, code, expression)                                                              \
    do {                                                                                                     \
        const Outcome outcome = halvexctl(service, line);                                                    \
        QVERIFY2(outcome.exitCode == (code) && matches(outcome.output, expression),                          \
                 qPrintable(QString::number(outcome.exitCode) + ": " + outcome.output));                     \
    } while (false)

/// halvexctl against the built service, started as from a script.
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
        writeFile(m_service.path("password"), "s3cret\n");
    }

    void cleanupTestCase() { QCOMPARE(m_service.stop(), 0); }

    void shows_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("output");
        row("status", "status", "ST500NM0011");
        row("over TCP", "--port PORT status", "ST500NM0011");
        row("info", "info 1", "67\\.1 MB \\(67108864 bytes\\)");
        row("smart", "smart 0", "Temperature");
        row("smart as CSV", "smart 0 --csv", "\\Aid,name,value,");
        row("volumes", "volumes --json", "\\A\\[\n\\]\n\\z");
        row("temperatures", "temperatures 0 --csv",
            "\\Atime,temperatureCelsius\n20[^\n]*T[^\n]*(Z|[+-]\\d\\d:\\d\\d),\\d+\n");
        row("count", "count", "\\A3\n\\z");
        row("users", "users", "Operator  Admin");
        row("login", "login Operator --password-file /dev/null", "rights 111");
        row("intervals", "intervals", "drives every 3 min, volumes every 5 min");
        row("hosts", "hosts", "local socket");
        row("refresh", "refresh --json", "\\A\\{\n *\"ok\": true\n\\}\n\\z");
        row("raw line with a reply", "raw DEVCOUNT", "\\ADEVCOUNT,3\n\\z");
        row("raw line without a reply", "raw BLABLA", "\\A\\z");
        row("help of a group", "scan --help", "scan start N.*scan stop N");
        row("help with the names of settings", "settings set --help", "smtpServer.*wTemp|wTemp.*smtpServer");
    }

    void shows()
    {
        QFETCH(QString, line);
        QFETCH(QString, output);
        line.replace("PORT", QString::number(m_service.port()));
        EXPECT(m_service, line, 0, output);
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("reason");
        row("smart: unknown drive", "smart 7", "no drive 7");
        row("info: negative drive", "info -1", "'-1' is not a drive number");
        row("temperatures: unknown drive", "temperatures 7", "no drive 7");
        row("schedule: unknown drive", "schedule set 7 daily 03:30", "no drive 7");
        row("schedule: in the past", "schedule set 1 once 2020-01-01 03:30", "has passed");
        row("schedule: at midnight", "schedule set 1 daily 00:00", "can miss");
        row("schedule: no time of day", "schedule set 1 daily 25:00", "'25:00' is not a time of day");
        row("scan: unknown drive", "scan start 7", "no drive 7");
        row("scan: beyond the drive", "scan start 1 --last 131072", "last sector of the drive is 131071");
        row("scan: not running", "scan stop 0", "no scan of drive 0");
        row("mail test: no mail setting", "mail-test wTemp=3", "not a mail setting");
        row("settings: limits in the wrong order", "settings set wTemp=70 cTemp=60", "wTemp.*above cTemp");
        row("watch: no terminal", "watch", "terminal");
    }

    void refuses()
    {
        QFETCH(QString, line);
        QFETCH(QString, reason);
        EXPECT(m_service, line, 1, QString("\\Ahalvexctl: [^\n]*%1[^\n]*\n\\z").arg(reason));
    }

    void changesSettings()
    {
        EXPECT(m_service, "status --check -q", 0, "\\A\\z");
        EXPECT(m_service,
               u8"settings set smtpSubj=\u00dcber wTemp=20 --password-file " + m_service.path("password"), 0,
               "uses these settings");
        EXPECT(m_service, "status --check -q", 3, "\\A\\z"); // the drives have 32 degrees
        EXPECT(m_service, "settings set cTemp=22", 0, "uses these settings");
        EXPECT(m_service, "status --check -q", 4, "\\A\\z");
        EXPECT(m_service, "settings --json", 0,
               u8"\"cTemp\": 22,.*\"smtpPass\": true,.*\"smtpSubj\": \"\u00dcber\",.*\"wTemp\": 20");
    }

    void printsMailErrorOnce()
    {
        const Outcome outcome =
            halvexctl(m_service, "mail-test smtpServer=127.0.0.1 smtpPort=1 smtpTo=a@b --dialogue");
        QCOMPARE(outcome.exitCode, 1);
        QCOMPARE(outcome.output.count("SMTP error"), 1);
    }

    void schedulesScan()
    {
        EXPECT(m_service, "schedule set 1 weekly sunday 3:30", 0, "every sunday at 03:30:00");
        EXPECT(m_service, "schedule --json", 0, "\"weekly\",.*\"03:30:00\",.*\"sunday\"");
        EXPECT(m_service, "schedule clear 1", 0, "no scan");
        EXPECT(m_service, "schedule --json", 0, "\\A((?!weekly).)*\\z");
    }

    void scansDrive()
    {
        EXPECT(m_service, "scan start 1 --block 4096 --first 8", 0, "sectors 8 to 131071 of drive 1");
        EXPECT(m_service, "scan status 1 --follow --json", 0,
               "\\[\\s*1000,\\s*1007\\s*\\]\\s*\\],.*\"currentSector\": 131071,.*\"state\": \"done\"");
        EXPECT(m_service, "scan", 0,
               "100 % of a part.*sectors 8 to 131071.*1000-1007\nnever scanned: drives 0, 2");
    }

    /// The service answers one local console at a time; while one follows a scan, each of many others gets
    /// its reply.
    void sharesLocalSocket()
    {
        EXPECT(m_service, "scan start 2 --last 20000", 0, "scanning");
        std::array<QProcess, 13> consoles;
        start(consoles.front(), m_service, "-t 60 scan status 2 --follow");
        for (auto other = consoles.begin() + 1; other != consoles.end(); ++other)
            start(*other, m_service, "-t 60 smart 0");
        for (QProcess &console : consoles) {
            QVERIFY(console.waitForFinished(kPatienceMs));
            QVERIFY2(console.exitCode() == 0, console.readAllStandardError());
        }
    }

    void reportsWhyNoServiceAnswers()
    {
        ServiceFixture service;
        service.writeMachine(json(R"({"drives": [
            {"number": 0, "dump": "drives/st500nm0011.json", "smartDelayMs": 5000}]})"));
        QVERIFY2(service.start(), service.output());
        EXPECT(service, "count", 2, "\\Ahalvexctl: .*detecting drives");
        EXPECT(service, "--wait 60 count", 0, "\\A1\n");
        QVERIFY(service.pause());
        EXPECT(service, "status", 2, "\\Ahalvexctl: .*paused");
        EXPECT(service, "hosts", 2, "  paused  ");
        QCOMPARE(service.stop(), 0);
        EXPECT(service, "count", 2, "\\Ahalvexctl: .*connection refused");
        EXPECT(service, QString("count --port %1").arg(service.port()), 2,
               "\\Ahalvexctl: .*connection refused");
    }

private:
    ServiceFixture m_service; ///< a healthy drive, a small one with bad sectors, and a slow one
};

QTEST_GUILESS_MAIN(TestConsole)
#include "tst_console.moc"
