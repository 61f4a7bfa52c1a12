// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/requests.h"
#include "client/settings_table.h"
#include "console/arguments.h"
#include "rows.h"

#include <QJsonDocument>

class TestCommandLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parsesOptions_data()
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
        row("no word → refused", "", "", "refused");
        row("unknown command", "frobnicate", "", "refused");
        row("half a command", "scan frobnicate", "", "refused");
        row("unknown option", "status --frobnicate", "", "refused");
        row("another command's option", "status --follow", "", "refused");
        row("argument missing", "smart", "", "refused");
        row("negative number", "-p 1 info -1", "127.0.0.1:1", "info: -1");
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

    void parsesOptions()
    {
        QFETCH(QString, line);
        const auto parsed = parseArguments(line.split(u' ', Qt::SkipEmptyParts), "/home/HalvexService001");
        QString asked;
        QString command = "refused";
        if (const auto *arguments = std::get_if<Arguments>(&parsed)) {
            asked = displayName(arguments->endpoints.first());
            command = (QStringList{arguments->command->name + u':'} + arguments->positionals).join(u' ');
        }
        QTEST(asked, "asked");
        QTEST(command, "command");
    }

    void refusesSetting_data()
    {
        QTest::addColumn<QString>("assignment");
        row("no value", "wTemp");
        row("unknown name", "temp=1");
        row("above the range", "cTemp=100");
        row("padded number", "cTemp=065");
        row("interval above the limit of the service key", "smartPollInterval=101h");
        row("neither on nor off", "emailNotify=maybe");
        row("separator of items", "smtpSubj=a~;b");
        row("separator of fields", "smtpSubj=a]![b");
        row("line end", "smtpSubj=a\nb");
        row("placeholder of the greeting", "smtpSubj=100%1");
        row("key of the settings file", "smtpSubj=a smtpTo=b");
        row("warning limit above the critical one", "wTemp=66");
        row("password on the command line", "smtpPass=secret");
    }

    void refusesSetting()
    {
        QFETCH(QString, assignment);
        QVERIFY(!client::changeSettings(exampleSettings(), QStringList{assignment}));
    }

    void changesSettings()
    {
        const QStringList assignments{
            "WTEMP=50",       "smartPollInterval=5m", "popupNotify=off",
            "emailNotify=ON", "warnExtTask=a b=c",    "smtpPass=",
        };
        const auto changed = client::changeSettings(exampleSettings(), assignments);
        QVERIFY2(changed, qPrintable(changed.failure().text));
        QCOMPARE(client::requests::setSettings(*changed).line,
                 "SET]![5000~;300000~;300000~;0~;1~;0~;f~;t~;s~;h~;1~;u~;~;25~;50~;65~;a b=c~;c");
    }

    void changesSettingsByDocument_data()
    {
        QTest::addColumn<QByteArray>("document");
        QTest::addColumn<bool>("isAccepted");
        row("keys of several kinds",
            QByteArray(R"({"smartPollIntervalMs": 60000, "emailNotify": true, "smtpPass": "new"})"), true);
        row("interval without its unit", QByteArray(R"({"smartPollInterval": 60000})"), false);
        row("number with a fraction", QByteArray(R"({"wTemp": 1.5})"), false);
        row("number as a text", QByteArray(R"({"wTemp": "50"})"), false);
        row("boolean as a number", QByteArray(R"({"emailNotify": 1})"), false);
    }

    void changesSettingsByDocument()
    {
        QFETCH(QByteArray, document);
        const auto changed =
            client::changeSettings(exampleSettings(), QJsonDocument::fromJson(document).object());
        QTEST(bool(changed), "isAccepted");
        if (!changed)
            return;
        QCOMPARE(changed->smartPollInterval, 60000);
        QCOMPARE(changed->emailNotify, true);
        QCOMPARE(changed->smtpPass, "new");
    }

private:
    static ServiceSettings exampleSettings()
    {
        const auto greeting = client::parseGreeting(QStringLiteral(
            "VER]![v]![5000]![180000]![300000]![box]![1]![1]![0]![0]![f]![t]![s]![h]![25]![1]![u]![p]!["
            "55]![65]![Local.1]![w]![c"));
        return greeting.value().settings;
    }
};

QTEST_APPLESS_MAIN(TestCommandLine)
#include "tst_command_line.moc"
