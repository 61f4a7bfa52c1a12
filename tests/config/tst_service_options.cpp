// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/fake_service_key.h"
#include "config/service_options.h"
#include "rows.h"
#include "wire/service_key_table.h"

#include <QLoggingCategory>
#include <QStandardPaths>
#include <QSysInfo>

Q_DECLARE_METATYPE(KeyValue)

namespace {

KeyValue text(const char *value)
{
    return QString(value);
}

KeyValue number(quint32 value)
{
    return value;
}

Result<ServiceOptions> read(const QMap<QString, KeyValue> &values)
{
    FakeServiceKey key;
    key.values = values;
    return readServiceOptions(key);
}

/// Returns the path of a program that only the system's administrator can replace.
QString shell()
{
    const QString posix = QStandardPaths::findExecutable("sh");
    return posix.isEmpty() ? QStandardPaths::findExecutable("cmd.exe") : posix;
}

} // namespace

class TestServiceOptions : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaults()
    {
        const auto options = read({});
        QVERIFY(options);
        QCOMPARE(options->listenAddress, QHostAddress(QHostAddress::Any));
        QVERIFY(options->allowFrom.allows(QHostAddress("203.0.113.9")));
        QCOMPARE(options->smtpReplyTimeout.count(), 0);
        QVERIFY(options->smtpSecurity == SmtpSecurity::None);
        QVERIFY(options->alertPolicy == AlertPolicy::Every);
        QCOMPARE(options->alertReminder.count(), 24);
        QCOMPARE(options->alertGrowth, (QVector<quint32>{5, 187, 196, 197, 198}));
    }

    void values()
    {
        const QString program = shell();
        const auto options = read({{"ListenAddress", text("::1")},
                                   {"ProtectMail", number(1)},
                                   {"SkipStandbyDrives", number(1)},
                                   {"LogFile", text("/var/log/halvex.log")},
                                   {"SmtpSecurity", text("starttls")},
                                   {"AlertPolicy", text("changes")},
                                   {"AlertReminderHours", number(0)},
                                   {"AlertGrowth", text("198, 5,5")},
                                   {"AlertWebhook", text("https://chat.example/hook?key=1")},
                                   {"AlertProgram", program}});
        QVERIFY2(options, qPrintable(options.failure().text));
        QCOMPARE(options->listenAddress, QHostAddress("::1"));
        QVERIFY(options->protectMail);
        QVERIFY(options->skipStandbyDrives);
        QVERIFY(!options->remoteAcknowledge);
        QCOMPARE(options->logFile, "/var/log/halvex.log");
        QVERIFY(options->smtpSecurity == SmtpSecurity::StartTls);
        QVERIFY(options->alertPolicy == AlertPolicy::Changes);
        QCOMPARE(options->smtpReplyTimeout.count(), 60);
        QCOMPARE(options->alertReminder.count(), 0);
        QCOMPARE(options->alertGrowth, (QVector<quint32>{5, 198}));
        QCOMPARE(options->alertWebhook.host(), "chat.example");
        QCOMPARE(options->alertProgram, QFileInfo(program).canonicalFilePath());
    }

    void emptyGrowthListAndReplyTimeout()
    {
        const auto options = read(
            {{"AlertGrowth", text("")}, {"AlertPolicy", text("changes")}, {"SmtpReplyTimeout", number(5)}});
        QVERIFY(options);
        QVERIFY(options->alertGrowth.isEmpty());
        QCOMPARE(options->smtpReplyTimeout.count(), 5);
    }

    void refusals_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<KeyValue>("value");
        QTest::addColumn<QString>("reason");
        row("host name to listen on", "ListenAddress", text("localhost"), "IPv4 or IPv6 address");
        row("short IPv4 address", "ListenAddress", text("10.1"), "IPv4 or IPv6 address");
        row("empty list of addresses", "AllowFrom", text(""), "item 1");
        row("empty item", "AllowFrom", text("::1,,10.0.0.1"), "item 2");
        row("IPv4 prefix above 32", "AllowFrom", text("10.0.0.0/33"), "from 0 to 32");
        row("prefix with a sign", "AllowFrom", text("::/+8"), "from 0 to 128");
        row("flag of 2", "ProtectMail", number(2), "a number from 0 to 1");
        row("relative log file", "LogFile", text("halvex.log"), "absolute path");
        row("timeout above an hour", "SmtpReplyTimeout", number(3601), "from 0 to 3600");
        row("security in capitals", "SmtpSecurity", text("TLS"), "none, starttls or tls");
        row("authorities without a certificate", "SmtpCaFile", text("/etc/passwd"), "PEM");
        row("authorities that do not exist", "SmtpCaFile", text("/no/such/file"), "cannot be read");
        row("unknown policy", "AlertPolicy", text("change"), "every or changes");
        row("reminder above a year", "AlertReminderHours", number(8761), "from 0 to 8760");
        row("attribute 256", "AlertGrowth", text("5,256"), "from 1 to 255");
        row("webhook over ftp", "AlertWebhook", text("ftp://secret.example/"), "http or https URL");
        row("webhook without a host", "AlertWebhook", text("https:///secret"), "http or https URL");
        row("relative program", "AlertProgram", text("sh"), "absolute path");
        row("program that cannot be run", "AlertProgram", text("/etc/passwd"), "executable file");
    }

    void refusals()
    {
        QFETCH(QString, name);
        QFETCH(KeyValue, value);
        QFETCH(QString, reason);
        const auto options = read({{name, value}});
        QVERIFY(!options);
        const QString failure = options.failure().text;
        QVERIFY2(failure.contains(name) && failure.contains(reason), qPrintable(failure));
        QVERIFY2(!failure.contains("secret"), qPrintable(failure));
    }

    /// Everybody may create files in /tmp, so everybody could replace a program there.
    void programInAFolderOfOthers()
    {
        if (QSysInfo::kernelType() == "winnt")
            QSKIP("Windows protects the folders of programs itself");
        QFile program(
            QDir::temp().filePath(QString("halvex-program-%1").arg(QCoreApplication::applicationPid())));
        QVERIFY(program.open(QIODevice::WriteOnly));
        QVERIFY(program.setPermissions(QFile::ReadOwner | QFile::ExeOwner));
        const auto options = read({{"AlertProgram", program.fileName()}});
        QVERIFY(program.remove());
        QVERIFY(options.failure().text.contains("others than root"));
    }

    void allowedAddresses_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QString>("address");
        QTest::addColumn<bool>("isAllowed");
        row("in the network", "192.0.2.0/24, ::1", "192.0.2.255", true);
        row("beside the network", "192.0.2.0/24, ::1", "192.0.3.0", false);
        row("second network of two", "192.0.2.0/24, ::1", "::1", true);
        row("IPv4 address over an IPv6 socket", "192.0.2.0/24", "::ffff:192.0.2.7", true);
        row("IPv4 address against an IPv6 network", "2001:db8::/32", "192.0.2.7", false);
        row("all of IPv4 is not IPv6", "0.0.0.0/0", "2001:db8::1", false);
    }

    void allowedAddresses()
    {
        QFETCH(QString, list);
        QFETCH(QString, address);
        const auto filter = AddressFilter::parse(list);
        QVERIFY(filter);
        QTEST(filter->allows(QHostAddress(address)), "isAllowed");
    }

    void misspelledNames_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("similar");
        row("other case", "Alertpolicy", "AlertPolicy");
        row("one letter missing", "AlertWebhok", "AlertWebhook");
        row("value of the service in other case", "port", "Port");
        row("empty policy", "AlertPolicy", "");
        row("value of the service manager", "Start", "");
        row("value of the service manager, four letters", "Type", "");
        row("an administrator's note", "Note", "");
    }

    void misspelledNames()
    {
        QFETCH(QString, name);
        QTEST(similarServiceKeyName(name), "similar");
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression("Alertpolicy.*AlertPolicy"));
        QVERIFY(read({{"Alertpolicy", number(1)}}));
    }

    void keyThatCannotBeRead()
    {
        FakeServiceKey key;
        key.error = AccessError{AccessError::Kind::Missing, {}};
        QVERIFY(readServiceOptions(key));
        key.error = AccessError{AccessError::Kind::Failed, "key.json: Permission denied"};
        const auto options = readServiceOptions(key);
        QVERIFY(!options);
        QVERIFY(options.failure().text.endsWith("key.json: Permission denied"));
    }

    void optionsAreLoggedWithoutSecrets()
    {
        QLoggingCategory::setFilterRules("halvex.config.info=true");
        QTest::ignoreMessage(QtInfoMsg, "The option \"SkipStandbyDrives\" is \"1\"");
        QTest::ignoreMessage(QtInfoMsg, "The option \"AlertWebhook\" is \"set\"");
        QVERIFY(read({{"SkipStandbyDrives", number(1)}, {"AlertWebhook", text("https://host/secret")}}));
        QLoggingCategory::setFilterRules({});
    }

    void everyOptionIsRead()
    {
        for (const ServiceKeyRow &option : serviceKeyTable()) {
            if (option.writer != ServiceKeyRow::Writer::Administrator)
                continue;
            const bool isText = option.type == ServiceKeyRow::Type::Text;
            const auto options = read({{option.name, isText ? number(0) : text("")}});
            QVERIFY2(!options, option.name.data());
        }
    }
};

QTEST_GUILESS_MAIN(TestServiceOptions)
#include "tst_service_options.moc"
