// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/arguments.h"
#include "console/client/greeting.h"
#include "console/client/requests.h"
#include "console/commands/command.h"
#include "console/help.h"
#include "console/settings_table.h"
#include "rows.h"

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void understands_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("asked");
        QTest::addColumn<QString>("command");
        row("by default", "status", "local socket /home/HalvexService001", "status:");
        row("socket", "--socket other status", "local socket other", "status:");
        row("port alone", "-p 5001 status", "127.0.0.1:5001", "status:");
        row("host alone", "status --host nas", "nas:5000", "status:");
        row("host and port", "--host nas --port 5001 status", "nas:5001", "status:");
        row("host with port", "--host nas:5002 status --port 5001", "nas:5002", "status:");
        row("bare IPv6", "--host ::1 status", "[::1]:5000", "status:");
        row("IPv6 with port", "--host [fe80::1]:5002 status", "[fe80::1]:5002", "status:");
        row("two words", "-p 1 scan start 3", "127.0.0.1:1", "scan start: 3");
        row("a group alone", "-p 1 settings", "127.0.0.1:1", "settings show:");
        row("option's value before the command", "-p 1 --timeout 3 scan --block 64K start 2", "127.0.0.1:1",
            "scan start: 2");
        row("many arguments", "-p 1 schedule set 1 weekly sunday 03:30", "127.0.0.1:1",
            "schedule set: 1 weekly sunday 03:30");
        row("nothing", "", "", "refused");
        row("unknown command", "frobnicate", "", "refused");
        row("half a command", "scan frobnicate", "", "refused");
        row("unknown option", "status --frobnicate", "", "refused");
        row("another command's option", "status --follow", "", "refused");
        row("argument missing", "smart", "", "refused");
        row("argument too many", "smart 1 2", "", "refused");
        row("port 0", "--port 0 status", "", "refused");
        row("port 65536", "--port 65536 status", "", "refused");
        row("port in host", "--host nas:x status", "", "refused");
        row("socket and host", "--socket a --host b status", "", "refused");
        row("two hosts", "--host a --host b status", "", "refused");
        row("timeout 0", "--timeout 0 status", "", "refused");
        row("timeout not a number", "--timeout nan status", "", "refused");
        row("wait without time", "status --wait", "", "refused");
    }

    void understands()
    {
        QFETCH(QString, line);
        const auto parsed =
            parseArguments(line.split(u' ', Qt::SkipEmptyParts), QStringLiteral("/home/HalvexService001"));
        QString asked;
        QString command = QStringLiteral("refused");
        if (const auto *arguments = std::get_if<Arguments>(&parsed)) {
            asked = displayName(arguments->endpoints.first());
            command = (QStringList{arguments->command.name + u':'} + arguments->positionals).join(u' ');
        }
        QTEST(asked, "asked");
        QTEST(command, "command");
    }

    void hasAFunctionForEachCommand()
    {
        for (const help::Command &command : help::commands())
            QVERIFY2(commandFunction(command.name), qPrintable(command.name));
    }

    void mergesSettings_data()
    {
        QTest::addColumn<QString>("assignments");
        QTest::addColumn<QString>("settings"); // as they go to the service; null when refused
        row("nothing", "", "5000~;180000~;300000~;1~;0~;0~;f~;t~;s~;h~;1~;u~;p~;25~;55~;65~;w~;c");
        row("several, in any case", "WTEMP=50|ctemp=60",
            "5000~;180000~;300000~;1~;0~;0~;f~;t~;s~;h~;1~;u~;p~;25~;50~;60~;w~;c");
        row("interval", "smartPollInterval=5m",
            "5000~;300000~;300000~;1~;0~;0~;f~;t~;s~;h~;1~;u~;p~;25~;55~;65~;w~;c");
        row("switches", "popupNotify=off|emailNotify=ON|logSysEvLog=1",
            "5000~;180000~;300000~;0~;1~;1~;f~;t~;s~;h~;1~;u~;p~;25~;55~;65~;w~;c");
        row("equals sign in the value", "warnExtTask=run a=b",
            "5000~;180000~;300000~;1~;0~;0~;f~;t~;s~;h~;1~;u~;p~;25~;55~;65~;run a=b~;c");
        row("forgets the password",
            "smtpPass=", "5000~;180000~;300000~;1~;0~;0~;f~;t~;s~;h~;1~;u~;~;25~;55~;65~;w~;c");
        row("no value", "wTemp", QString());
        row("unknown name", "temp=1", QString());
        row("out of range", "cTemp=100", QString());
        row("padded number", "cTemp=065", QString());
        row("interval that would not survive a restart", "smartPollInterval=101h", QString());
        row("no switch", "emailNotify=maybe", QString());
        row("separator of items", "smtpSubj=a~;b", QString());
        row("separator of fields", "smtpSubj=a]![b", QString());
        row("line end", "smtpSubj=a\nb", QString());
        row("placeholder of the greeting", "smtpSubj=100%1", QString());
        row("password on the command line", "smtpPass=secret", QString());
    }

    void mergesSettings()
    {
        QFETCH(QString, assignments);
        QFETCH(QString, settings);
        const auto greeting = client::parseGreeting(QStringLiteral(
            "VER]![v]![5000]![180000]![300000]![box]![1]![1]![0]![0]![f]![t]![s]![h]![25]![1]![u]![p]!["
            "55]![65]![Local.1]![w]![c"));
        const MergedSettings merged =
            mergeSettings(greeting.value().settings, assignments.split(u'|', Qt::SkipEmptyParts));
        QCOMPARE(merged.error.isEmpty(), !settings.isNull());
        if (!settings.isNull())
            QCOMPARE(client::requests::setSettings(merged.settings), QStringLiteral("SET]![") + settings);
    }
};

QTEST_APPLESS_MAIN(TestCommandLine)
#include "tst_command_line.moc"
