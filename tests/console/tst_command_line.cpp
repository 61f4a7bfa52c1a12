// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/arguments.h"
#include "console/client/requests.h"
#include "console/commands/command.h"
#include "console/help.h"
#include "console/settings_table.h"

#include <QProcess>
#include <QStandardPaths>
#include <QTest>

namespace {

const QString kSocket = QStringLiteral("/home/HalvexService001");

QStringList words(const QString &line)
{
    return line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

client::ServiceSettings someSettings()
{
    client::ServiceSettings settings;
    settings.port = 5000;
    settings.smartPollInterval = 180000;
    settings.freeSpacePollInterval = 300000;
    settings.popupNotify = true;
    settings.smtpFrom = QStringLiteral("f");
    settings.smtpTo = QStringLiteral("t");
    settings.smtpSubj = QStringLiteral("s");
    settings.smtpServer = QStringLiteral("h");
    settings.smtpNeedAuth = true;
    settings.smtpUser = QStringLiteral("u");
    settings.smtpPass = QStringLiteral("p");
    settings.smtpPort = 25;
    settings.wTemp = 55;
    settings.cTemp = 65;
    settings.warnExtTask = QStringLiteral("w");
    settings.critExtTask = QStringLiteral("c");
    return settings;
}

} // namespace

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endpoints_data();
    void endpoints();
    void refuses_data();
    void refuses();
    void findsCommands_data();
    void findsCommands();
    void hasAFunctionForEachCommand();
    void mergesSettings_data();
    void mergesSettings();
    void refusesSettings_data();
    void refusesSettings();
    void completes_data();
    void completes();
};

void TestCommandLine::endpoints_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("asked");
    QTest::newRow("by default") << "status"
                                << "local socket /home/HalvexService001";
    QTest::newRow("socket") << "--socket other status"
                            << "local socket other";
    QTest::newRow("port alone") << "-p 5001 status"
                                << "127.0.0.1:5001";
    QTest::newRow("host alone") << "status --host nas"
                                << "nas:5000";
    QTest::newRow("host and port") << "--host nas --port 5001 status"
                                   << "nas:5001";
    QTest::newRow("host with port") << "--host nas:5002 status --port 5001"
                                    << "nas:5002";
    QTest::newRow("bare IPv6") << "--host ::1 status"
                               << "[::1]:5000";
    QTest::newRow("IPv6 with port") << "--host [fe80::1]:5002 status"
                                    << "[fe80::1]:5002";
}

void TestCommandLine::endpoints()
{
    QFETCH(QString, line);
    QFETCH(QString, asked);
    const auto parsed = parseArguments(words(line), kSocket);
    const auto *arguments = std::get_if<Arguments>(&parsed);
    QVERIFY(arguments);
    QCOMPARE(displayName(arguments->endpoints.first()), asked);
}

void TestCommandLine::refuses_data()
{
    QTest::addColumn<QString>("line");
    QTest::newRow("nothing") << "";
    QTest::newRow("unknown command") << "frobnicate";
    QTest::newRow("half a command") << "scan frobnicate";
    QTest::newRow("unknown option") << "status --frobnicate";
    QTest::newRow("another command's option") << "status --follow";
    QTest::newRow("argument missing") << "smart";
    QTest::newRow("argument too many") << "smart 1 2";
    QTest::newRow("port 0") << "--port 0 status";
    QTest::newRow("port 65536") << "--port 65536 status";
    QTest::newRow("port in host") << "--host nas:x status";
    QTest::newRow("socket and host") << "--socket a --host b status";
    QTest::newRow("two hosts") << "--host a --host b status";
    QTest::newRow("timeout 0") << "--timeout 0 status";
    QTest::newRow("timeout not a number") << "--timeout nan status";
    QTest::newRow("wait without time") << "status --wait";
}

void TestCommandLine::refuses()
{
    QFETCH(QString, line);
    QVERIFY(std::holds_alternative<UsageError>(parseArguments(words(line), kSocket)));
}

void TestCommandLine::findsCommands_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("rest");
    QTest::newRow("one word") << "smart 3"
                              << "smart"
                              << "3";
    QTest::newRow("two words") << "scan start 3"
                               << "scan start"
                               << "3";
    QTest::newRow("a group alone") << "settings"
                                   << "settings show"
                                   << "";
    QTest::newRow("option's value before the command") << "--timeout 3 scan --block 64K start 2"
                                                       << "scan start"
                                                       << "2";
    QTest::newRow("many arguments") << "schedule set 1 weekly sunday 03:30"
                                    << "schedule set"
                                    << "1 weekly sunday 03:30";
}

void TestCommandLine::findsCommands()
{
    QFETCH(QString, line);
    QFETCH(QString, command);
    QFETCH(QString, rest);
    const auto parsed = parseArguments(words(line), kSocket);
    const auto *arguments = std::get_if<Arguments>(&parsed);
    QVERIFY(arguments);
    QCOMPARE(arguments->command.name, command);
    QCOMPARE(arguments->positionals.join(QLatin1Char(' ')), rest);
}

void TestCommandLine::hasAFunctionForEachCommand()
{
    for (const help::Command &command : help::commands())
        QVERIFY2(commandFunction(command.name), qPrintable(command.name));
}

void TestCommandLine::mergesSettings_data()
{
    QTest::addColumn<QStringList>("assignments");
    QTest::addColumn<QString>("request");
    const QString unchanged =
        QStringLiteral("SET]![5000~;180000~;300000~;1~;0~;0~;f~;t~;s~;h~;1~;u~;p~;25~;55~;65~;w~;c");
    const auto changed = [&](const QString &from, const QString &to) {
        QString request = unchanged;
        return request.replace(from, to);
    };
    QTest::newRow("nothing") << QStringList() << unchanged;
    QTest::newRow("several, in any case")
        << QStringList{QStringLiteral("WTEMP=50"), QStringLiteral("ctemp=60")}
        << changed(QStringLiteral("~;55~;65~;"), QStringLiteral("~;50~;60~;"));
    QTest::newRow("interval") << QStringList{QStringLiteral("smartPollInterval=5m")}
                              << changed(QStringLiteral("~;180000~;"), QStringLiteral("~;300000~;"));
    QTest::newRow("switches") << QStringList{QStringLiteral("popupNotify=off"),
                                             QStringLiteral("emailNotify=ON"),
                                             QStringLiteral("logSysEvLog=1")}
                              << changed(QStringLiteral("~;1~;0~;0~;"), QStringLiteral("~;0~;1~;1~;"));
    QTest::newRow("equals sign in the value")
        << QStringList{QStringLiteral("warnExtTask=run a=b")}
        << changed(QStringLiteral("~;w~;"), QStringLiteral("~;run a=b~;"));
    QTest::newRow("forgets the password") << QStringList{QStringLiteral("smtpPass=")}
                                          << changed(QStringLiteral("~;p~;"), QStringLiteral("~;~;"));
}

void TestCommandLine::mergesSettings()
{
    QFETCH(QStringList, assignments);
    QFETCH(QString, request);
    const MergedSettings merged = mergeSettings(someSettings(), assignments);
    QCOMPARE(merged.error, QString());
    QCOMPARE(client::requests::setSettings(merged.settings), request);
}

void TestCommandLine::refusesSettings_data()
{
    QTest::addColumn<QString>("assignment");
    QTest::newRow("no value") << "wTemp";
    QTest::newRow("unknown name") << "temp=1";
    QTest::newRow("out of range") << "cTemp=100";
    QTest::newRow("padded number") << "cTemp=065";
    QTest::newRow("interval that would not survive a restart") << "smartPollInterval=101h";
    QTest::newRow("no switch") << "emailNotify=maybe";
    QTest::newRow("separator of items") << "smtpSubj=a~;b";
    QTest::newRow("separator of fields") << "smtpSubj=a]![b";
    QTest::newRow("line end") << "smtpSubj=a\nb";
    QTest::newRow("placeholder of the greeting") << "smtpSubj=100%1";
    QTest::newRow("password on the command line") << "smtpPass=secret";
}

void TestCommandLine::refusesSettings()
{
    QFETCH(QString, assignment);
    QVERIFY(!mergeSettings(someSettings(), {assignment}).error.isEmpty());
}

void TestCommandLine::completes_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("offered");
    QTest::newRow("a command") << "sma"
                               << "smart";
    QTest::newRow("a word of a group") << "schedule s"
                                       << "show set";
    QTest::newRow("an option of the command") << "scan status --f"
                                              << "--follow";
    QTest::newRow("an option of all commands") << "status --js"
                                               << "--json";
    QTest::newRow("nothing after a whole command") << "smart s"
                                                   << "";
}

void TestCommandLine::completes()
{
    QFETCH(QString, typed);
    QFETCH(QString, offered);
    const QString bash = QStandardPaths::findExecutable(QStringLiteral("bash"));
    if (bash.isEmpty())
        QSKIP("no bash here");
    QProcess process;
    process.start(bash,
                  {QStringLiteral("--norc"), QStringLiteral("-c"),
                   help::bashCompletion() +
                       QStringLiteral("\nCOMP_WORDS=(halvexctl %1); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                                      "_halvexctl; echo \"${COMPREPLY[*]}\"")
                           .arg(typed)});
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardError(), QByteArray());
    QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()).trimmed(), offered);
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_command_line.moc"
