// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/arguments.h"
#include "console/client/requests.h"
#include "console/commands/command.h"
#include "console/help.h"
#include "console/settings_table.h"
#include "rows.h"

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
    void endpoints_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("asked");
        row("by default", "status", "local socket /home/HalvexService001");
        row("socket", "--socket other status", "local socket other");
        row("port alone", "-p 5001 status", "127.0.0.1:5001");
        row("host alone", "status --host nas", "nas:5000");
        row("host and port", "--host nas --port 5001 status", "nas:5001");
        row("host with port", "--host nas:5002 status --port 5001", "nas:5002");
        row("bare IPv6", "--host ::1 status", "[::1]:5000");
        row("IPv6 with port", "--host [fe80::1]:5002 status", "[fe80::1]:5002");
    }

    void endpoints()
    {
        QFETCH(QString, line);
        QFETCH(QString, asked);
        const auto parsed = parseArguments(words(line), kSocket);
        const auto *arguments = std::get_if<Arguments>(&parsed);
        QVERIFY(arguments);
        QCOMPARE(displayName(arguments->endpoints.first()), asked);
    }

    void refuses_data()
    {
        QTest::addColumn<QString>("line");
        row("nothing", "");
        row("unknown command", "frobnicate");
        row("half a command", "scan frobnicate");
        row("unknown option", "status --frobnicate");
        row("another command's option", "status --follow");
        row("argument missing", "smart");
        row("argument too many", "smart 1 2");
        row("port 0", "--port 0 status");
        row("port 65536", "--port 65536 status");
        row("port in host", "--host nas:x status");
        row("socket and host", "--socket a --host b status");
        row("two hosts", "--host a --host b status");
        row("timeout 0", "--timeout 0 status");
        row("timeout not a number", "--timeout nan status");
        row("wait without time", "status --wait");
    }

    void refuses()
    {
        QFETCH(QString, line);
        QVERIFY(std::holds_alternative<UsageError>(parseArguments(words(line), kSocket)));
    }

    void findsCommands_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("rest");
        row("one word", "smart 3", "smart", "3");
        row("two words", "scan start 3", "scan start", "3");
        row("a group alone", "settings", "settings show", "");
        row("option's value before the command", "--timeout 3 scan --block 64K start 2", "scan start", "2");
        row("many arguments", "schedule set 1 weekly sunday 03:30", "schedule set", "1 weekly sunday 03:30");
    }

    void findsCommands()
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

    void hasAFunctionForEachCommand()
    {
        for (const help::Command &command : help::commands())
            QVERIFY2(commandFunction(command.name), qPrintable(command.name));
    }

    void mergesSettings_data()
    {
        QTest::addColumn<QStringList>("assignments");
        QTest::addColumn<QString>("request");
        const QString unchanged =
            QStringLiteral("SET]![5000~;180000~;300000~;1~;0~;0~;f~;t~;s~;h~;1~;u~;p~;25~;55~;65~;w~;c");
        const auto changed = [&](const QString &from, const QString &to) {
            QString request = unchanged;
            return request.replace(from, to);
        };
        row("nothing", QStringList(), unchanged);
        row("several, in any case", QStringList{QStringLiteral("WTEMP=50"), QStringLiteral("ctemp=60")},
            changed(QStringLiteral("~;55~;65~;"), QStringLiteral("~;50~;60~;")));
        row("interval", QStringList{QStringLiteral("smartPollInterval=5m")},
            changed(QStringLiteral("~;180000~;"), QStringLiteral("~;300000~;")));
        row("switches",
            QStringList{QStringLiteral("popupNotify=off"), QStringLiteral("emailNotify=ON"),
                        QStringLiteral("logSysEvLog=1")},
            changed(QStringLiteral("~;1~;0~;0~;"), QStringLiteral("~;0~;1~;1~;")));
        row("equals sign in the value", QStringList{QStringLiteral("warnExtTask=run a=b")},
            changed(QStringLiteral("~;w~;"), QStringLiteral("~;run a=b~;")));
        row("forgets the password", QStringList{QStringLiteral("smtpPass=")},
            changed(QStringLiteral("~;p~;"), QStringLiteral("~;~;")));
    }

    void mergesSettings()
    {
        QFETCH(QStringList, assignments);
        QFETCH(QString, request);
        const MergedSettings merged = mergeSettings(someSettings(), assignments);
        QCOMPARE(merged.error, QString());
        QCOMPARE(client::requests::setSettings(merged.settings), request);
    }

    void refusesSettings_data()
    {
        QTest::addColumn<QString>("assignment");
        row("no value", "wTemp");
        row("unknown name", "temp=1");
        row("out of range", "cTemp=100");
        row("padded number", "cTemp=065");
        row("interval that would not survive a restart", "smartPollInterval=101h");
        row("no switch", "emailNotify=maybe");
        row("separator of items", "smtpSubj=a~;b");
        row("separator of fields", "smtpSubj=a]![b");
        row("line end", "smtpSubj=a\nb");
        row("placeholder of the greeting", "smtpSubj=100%1");
        row("password on the command line", "smtpPass=secret");
    }

    void refusesSettings()
    {
        QFETCH(QString, assignment);
        QVERIFY(!mergeSettings(someSettings(), {assignment}).error.isEmpty());
    }

    void completes_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("offered");
        row("a command", "sma", "smart");
        row("a word of a group", "schedule s", "show set");
        row("an option of the command", "scan status --f", "--follow");
        row("an option of all commands", "status --js", "--json");
        row("nothing after a whole command", "smart s", "");
    }

    void completes()
    {
        QFETCH(QString, typed);
        QFETCH(QString, offered);
        const QString bash = QStandardPaths::findExecutable(QStringLiteral("bash"));
        if (bash.isEmpty())
            QSKIP("no bash here");
        QProcess process;
        process.start(
            bash, {QStringLiteral("--norc"), QStringLiteral("-c"),
                   help::bashCompletion() +
                       QStringLiteral("\nCOMP_WORDS=(halvexctl %1); COMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n"
                                      "_halvexctl; echo \"${COMPREPLY[*]}\"")
                           .arg(typed)});
        QVERIFY(process.waitForFinished());
        QCOMPARE(process.readAllStandardError(), QByteArray());
        QCOMPARE(QString::fromUtf8(process.readAllStandardOutput()).trimmed(), offered);
    }
};

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_command_line.moc"
