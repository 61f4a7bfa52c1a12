// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "files.h"
#include "rows.h"
#include "web/command_line.h"
#include "web/configuration.h"
#include "web/passwords.h"

#include <QTemporaryDir>

class TestWebConfiguration : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void refuses_data()
    {
        QTest::addColumn<QString>("json");  // apostrophes: quotation marks
        QTest::addColumn<QString>("fault"); // the beginning of the message
        row("not JSON", "{", "byte 1: ");
        row("not an object", "[]", "must be a JSON object");
        row("unknown key", "{'Listen': '127.0.0.1:1'}", "Listen: this key is not known");
        row("unknown key in a list", "{'services': [{'host': 'a'}, {'host': 'b', 'tls': 1}]}",
            "services[1].tls: this key is not known");
        row("port as a text", "{'services': [{'host': 'a', 'port': '5000'}]}",
            "services[0].port: must be a number");
        row("interval that is a fraction", "{'pollSeconds': 5.5}",
            "pollSeconds: must be a whole number from 5");
        row("below the minimum", "{'pollSeconds': 4}", "pollSeconds: must be a whole number from 5");
        row("above the maximum", "{'retentionDays': 36501}", "retentionDays: must be a whole");
        row("flag as a number", "{'open': 1}", "open: must be true or false");
        row("address without a port", "{'listen': '127.0.0.1'}", "listen: must be ADDRESS:PORT");
        row("address as a name", "{'listen': 'example.org:80'}", "listen: must be ADDRESS:PORT");
        row("path without a slash", "{'basePath': 'disks'}", "basePath: must begin with '/'");
        row("path with a step up", "{'basePath': '/a/../b'}", "basePath: must begin with '/'");
        row("service without a host", "{'services': [{'name': 'a'}]}", "services[0].host: is missing");
        row("name with a slash", "{'services': [{'name': 'a/b', 'host': 'a'}]}",
            "services[0].name: must be 1 to 64 letters");
        row("IPv6 address without a name", "{'services': [{'host': '::1'}]}",
            "services[0].name: must be 1 to 64 letters");
        row("zone that does not exist", "{'services': [{'host': 'a', 'timeZone': 'Mars/Base'}]}",
            "services[0].timeZone: is not");
        row("role that does not exist", "{'users': [{'name': 'a', 'role': 'admin'}]}",
            "users[0].role: must be");
        row("password in plain text", "{'users': [{'name': 'a', 'role': 'reader', 'password': 'secret'}]}",
            "users[0].password: must be a line that halvex-web --hash-password printed");
        row("empty token", "{'metricsToken': ''}", "metricsToken: must not be empty");
        row("proxy as a name", "{'trustedProxies': ['proxy']}", "trustedProxies: 'proxy' is not");
    }

    void refuses()
    {
        QFETCH(QString, json);
        QFETCH(QString, fault);
        const auto configuration = web::parseConfiguration(quoted(json));
        QVERIFY(!configuration);
        QVERIFY2(configuration.failure().text.startsWith(fault), qPrintable(configuration.failure().text));
    }

    void reads()
    {
        const auto read = web::parseConfiguration(quoted(
            "{'listen': '[::1]:80', 'basePath': '/disks', 'hosts': ['Disks.Example.org'], 'pollSeconds': 5,"
            "'services': [{'name': 'files', 'host': '::1', 'port': 65535, 'timeZone': 'Europe/Berlin'},"
            "{'host': 'nas'}]}"));
        QVERIFY2(read, qPrintable(read.failure().text));
        QCOMPARE(read->listen.address, QHostAddress(QHostAddress::LocalHostIPv6));
        QCOMPARE(read->basePath, "/disks/");
        QCOMPARE(read->hosts, QStringList{"disks.example.org"});
        QCOMPARE(read->services.at(0).endpoint.port, quint16(65535));
        QCOMPARE(read->services.at(1).name, "nas");
        QCOMPARE(read->services.at(1).endpoint.port, quint16(5000));
        QCOMPARE(read->retentionDays, 730);
    }

    void protectsOpenAddresses_data()
    {
        QTest::addColumn<QByteArray>("further"); // keys besides the address
        QTest::addColumn<bool>("starts");
        const QByteArray users = quoted("'users': [{'name': 'ann', 'role': 'operator', 'password': '") +
                                 QByteArray("pbkdf2-sha256:10000:") + QByteArray(16, 's').toBase64() + ':' +
                                 QByteArray(32, 'k').toBase64() + "\"}]";
        row("neither users nor open", quoted("'plainHttp': true"), false);
        row("open to everybody", quoted("'open': true"), true);
        row("users over plain HTTP", users, false);
        row("users, plain HTTP allowed", users + quoted(", 'plainHttp': true"), true);
        row("users and TLS", users + quoted(", 'tls': {'certificate': 'a', 'key': 'b'}"), true);
        row("a service name twice", quoted("'open': true, 'services': [{'host': 'a'}, {'host': 'a'}]"),
            false);
    }

    void protectsOpenAddresses()
    {
        QFETCH(QByteArray, further);
        const auto configuration =
            web::parseConfiguration(quoted("{'listen': '0.0.0.0:80', ") + further + '}');
        QVERIFY2(configuration, qPrintable(configuration.failure().text));
        QTEST(bool(web::checkConfiguration(*configuration)), "starts");
    }

    void optionsOverrideTheFile()
    {
        QTemporaryDir folder;
        const QString path = folder.filePath("web.json");
        writeFile(path, quoted("{'listen': '127.0.0.1:1', 'services': [{'host': 'a'}], 'pollSeconds': 7}"));
        const auto line = web::parseCommandLine(
            {"--config=" + path, "--listen", "127.0.0.1:2", "--service", "b=[::1]:3", "--service", "c"});
        QVERIFY2(line, qPrintable(line.failure().text));
        const auto configuration = web::loadConfiguration(*line);
        QVERIFY2(configuration, qPrintable(configuration.failure().text));
        QCOMPARE(configuration->listen.port, quint16(2));
        QCOMPARE(configuration->services.size(), 2);
        QCOMPARE(configuration->services.at(0).endpoint.host, "::1");
        QCOMPARE(configuration->services.at(1).endpoint.port, quint16(5000));
        QCOMPARE(configuration->pollSeconds, 7);
    }

    void refusesOptions_data()
    {
        QTest::addColumn<QStringList>("arguments");
        row("unknown option", QStringList{"--serve"});
        row("value missing", QStringList{"--state"});
        row("IPv6 service without a name", QStringList{"--service", "::1"});
        row("listening port too large", QStringList{"--listen=127.0.0.1:65536"});
    }

    void refusesOptions()
    {
        QFETCH(QStringList, arguments);
        QVERIFY(!web::parseCommandLine(arguments));
    }

    void namedFileMustExist()
    {
        const auto line = web::parseCommandLine({"--config", "/nowhere/web.json"});
        const auto configuration = web::loadConfiguration(*line);
        QVERIFY(!configuration);
        QVERIFY(configuration.failure().text.startsWith("/nowhere/web.json: "));
    }

    /// The hash comes from Python's hashlib: pbkdf2_hmac("sha256", "secret ü", b"0123456789abcdef", 10000).
    void verifiesPasswords()
    {
        const QByteArray hash =
            "pbkdf2-sha256:10000:MDEyMzQ1Njc4OWFiY2RlZg==:W9aZYnOGw6LvPCA1+HVLy4u1uR5cUzJzEGbuq5r64qw=";
        QVERIFY(web::verifyPassword("secret ü", hash));
        QVERIFY(!web::verifyPassword("secret u", hash));
        QVERIFY(!web::verifyPassword(QString(), QByteArray()));
        const QByteArray own = web::hashPassword("x");
        QVERIFY(web::isPasswordHash(own));
        QVERIFY(web::hashPassword("x") != own); // each has a salt of its own
    }
};

QTEST_GUILESS_MAIN(TestWebConfiguration)
#include "tst_web_configuration.moc"
