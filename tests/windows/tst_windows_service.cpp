// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/scrambling.h"
#include "windows/service_installation.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

namespace {

QJsonObject machineWithDrives(int count)
{
    const QString dump = QStringLiteral(HALVEX_DRIVES_FIXTURE "/st500nm0011.json");
    QJsonArray drives;
    for (int i = 0; i < count; ++i)
        drives.append(QJsonObject{{QStringLiteral("number"), i}, {QStringLiteral("dump"), dump}});
    return {{QStringLiteral("drives"), drives}};
}

} // namespace

/// The built service in the hands of the service manager, and the consoles' two ways to it.
class TestWindowsService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void installsOnce()
    {
        ServiceInstallation service;
        const QString program = service.path(QStringLiteral("HalvexLocalService.exe"));
        Outcome outcome = service.run({QStringLiteral("-install")});
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(outcome.output,
                 "The service Halvex Service has been installed under: " + program.toLocal8Bit() + '\n');
        QCOMPARE(service.keyValue(QStringLiteral("ImagePath")).toString(), program);
        QCOMPARE(service.keyValue(QStringLiteral("Description")).toString(),
                 QStringLiteral("Halvex Local Service"));
        QCOMPARE(service.keyValue(QStringLiteral("ObjectName")).toString(), QStringLiteral("LocalSystem"));
        QCOMPARE(service.keyValue(QStringLiteral("Start")).toInt(), 2);     // automatic
        QCOMPARE(service.keyValue(QStringLiteral("Type")).toInt(), 0x0110); // own process, interactive

        outcome = service.run({QStringLiteral("-install")});
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(outcome.complaint, QByteArray("The service Halvex Service is already installed\n"));

        outcome = service.run({QStringLiteral("-version")});
        QVERIFY2(outcome.output.endsWith("\n\nis installed and not running\n\n"), outcome.output);

        outcome = service.run({QStringLiteral("-uninstall")});
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(outcome.output, QByteArray("The service Halvex Service has been uninstalled.\n"));

        outcome = service.run({QStringLiteral("-uninstall")});
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(outcome.complaint, QByteArray("The service Halvex Service is not installed\n"));
    }

    void runs()
    {
        ServiceInstallation service;
        QVERIFY(service.install());
        QVERIFY(service.serve());
        QVERIFY(
            service.run({QStringLiteral("-version")}).output.endsWith("\n\nis installed and running\n\n"));
        const QString greeting = service.greetingOverTcp();
        QVERIFY2(greeting.startsWith(QLatin1String("VER]![Halvex Service v 5.0.5")), qPrintable(greeting));
        // All but the console's own number.
        const auto common = [](const QString &line) { return line.section(QLatin1String("]!["), 0, 19); };
        QCOMPARE(common(ServiceInstallation::greetingOverPipe()), common(greeting));

        const Outcome outcome = service.run({QStringLiteral("-terminate")});
        QCOMPARE(outcome.exitCode, 0);
        QCOMPARE(outcome.complaint, QByteArray()); // it has stopped, or there would be a warning
        QVERIFY(service.run({QStringLiteral("-version")}).output.endsWith("and not running\n\n"));
        QVERIFY(service.serve()); // once more
    }

    /// Wine lets the system below take part.
    void servesOtherMachines()
    {
        const QString shell = QStringLiteral("Z:/bin/bash");
        if (!QFile::exists(shell))
            QSKIP("there is no other system here");
        ServiceInstallation service;
        QVERIFY(service.install());
        QVERIFY(service.serve());
        QTemporaryDir folder;
        const QString line = folder.filePath(QStringLiteral("line"));
        QVERIFY(QProcess::startDetached(
            shell, {QStringLiteral("-c"),
                    QStringLiteral("exec 3<>/dev/tcp/127.0.0.1/%1; head -n 1 <&3 >\"$WINEPREFIX/drive_c/%2\"")
                        .arg(service.port())
                        .arg(line.mid(3))}));
        const auto greeting = [&line] {
            QFile file(line);
            return file.open(QIODevice::ReadOnly) ? unscramble(file.readAll().trimmed()) : QString();
        };
        QTRY_VERIFY_WITH_TIMEOUT(greeting().startsWith(QLatin1String("VER]![")), 60000);
    }

    void pauses()
    {
        ServiceInstallation service;
        QVERIFY(service.install());
        QVERIFY(service.serve());
        QCOMPARE(service.run({QStringLiteral("-pause")}).exitCode, 0);
        QVERIFY(service.waitFor(ServiceState::Paused));
        QCOMPARE(service.greetingOverTcp(), QStringLiteral("PAUSED"));
        QCOMPARE(ServiceInstallation::greetingOverPipe(), QStringLiteral("PAUSED"));
        QCOMPARE(service.run({QStringLiteral("-resume")}).exitCode, 0);
        QVERIFY(service.waitFor(ServiceState::Running));
        QVERIFY(service.greetingOverTcp().startsWith(QLatin1String("VER]![")));
        QVERIFY(service.stop());
    }

    void startsOnlyForTheManager_data()
    {
        QTest::addColumn<QStringList>("options");
        QTest::newRow("no option") << QStringList();
        QTest::newRow("unknown option") << QStringList{QStringLiteral("--help")};
    }

    void startsOnlyForTheManager()
    {
        QFETCH(QStringList, options);
        const ServiceInstallation service;
        const Outcome outcome = service.run(options);
        QCOMPARE(outcome.exitCode, -4);
        QCOMPARE(outcome.output, QByteArray());
        QCOMPARE(outcome.complaint, QByteArray("The service Halvex Service could not start\n"));
    }

    void readsItsKey_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<int>("used"); // what a service that has read it writes back

        const QString drives = QStringLiteral("SMARTPollInterval");
        const QString volumes = QStringLiteral("FreeSpacePollInterval");
        const QString port = QStringLiteral("Port");
        QTest::newRow("shortest") << drives << QVariant(1) << 1;
        QTest::newRow("longest") << volumes << QVariant(360000) << 360000;
        QTest::newRow("too short") << drives << QVariant(0) << 180;
        QTest::newRow("too long") << volumes << QVariant(360001) << 300;
        QTest::newRow("highest bit") << drives << QVariant(-1) << 180;
        QTest::newRow("text") << drives << QVariant(QStringLiteral("60")) << 180;
        QTest::newRow("64 bits") << volumes << QVariant(qlonglong(60)) << 300;
        QTest::newRow("list of texts") << port << QVariant(QStringList{QStringLiteral("6000")}) << 5000;
        QTest::newRow("absent") << port << QVariant() << 5000;
    }

    void readsItsKey()
    {
        QFETCH(QString, name);
        QFETCH(QVariant, stored);
        QFETCH(int, used);
        ServiceInstallation service;
        QVERIFY(service.install());
        service.setKeyValue(name, stored);
        QVERIFY(service.start());
        QVERIFY(service.stop());
        QCOMPARE(service.keyValue(name).toInt(), used);
    }

    void countsDrivesOnCommand()
    {
        ServiceInstallation service;
        ServiceInstallation::writeMachine(machineWithDrives(1));
        QVERIFY(service.install());
        QVERIFY(service.serve());
        QCOMPARE(service.ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,1"));
        ServiceInstallation::writeMachine(machineWithDrives(2));
        QCOMPARE(service.run({QStringLiteral("-command"), QStringLiteral("5")}).exitCode, 0);
        QTRY_COMPARE_WITH_TIMEOUT(service.ask(QStringLiteral("DEVCOUNT")), QStringLiteral("DEVCOUNT,2"),
                                  60000);
    }

    void keepsItsFilesBesideTheProgram()
    {
        ServiceInstallation service;
        ServiceInstallation::writeMachine(machineWithDrives(1));
        QVERIFY(service.install());
        QVERIFY(service.serve());
        const Outcome set = service.runConsole(
            {QStringLiteral("settings"), QStringLiteral("set"), QStringLiteral("smtpServer=mail.example")});
        QVERIFY2(set.exitCode == 0, set.complaint);
        QVERIFY(QFile::exists(service.path(QStringLiteral("temperature.log"))));
        QVERIFY(service.stop());
        QVERIFY(QFile::exists(service.path(QStringLiteral("HalvexService.ini"))));
        QVERIFY(service.serve());
        const QString greeting = service.greetingOverTcp();
        QVERIFY2(greeting.contains(QLatin1String("mail.example")), qPrintable(greeting));
    }

    void servesTheConsole_data()
    {
        QTest::addColumn<bool>("overTcp");
        QTest::newRow("named pipe") << false;
        QTest::newRow("TCP") << true;
    }

    void servesTheConsole()
    {
        QFETCH(bool, overTcp);
        ServiceInstallation service;
        ServiceInstallation::writeMachine(machineWithDrives(1));
        QVERIFY(service.install());
        QVERIFY(service.serve());
        QStringList arguments{QStringLiteral("status"), QStringLiteral("--json")};
        if (overTcp)
            arguments << QStringLiteral("--port") << QString::number(service.port());
        const Outcome outcome = service.runConsole(arguments);
        QVERIFY2(outcome.exitCode == 0, outcome.complaint);
        const QJsonArray drives =
            QJsonDocument::fromJson(outcome.output).object().value(QLatin1String("drives")).toArray();
        QCOMPARE(drives.size(), 1);
        QCOMPARE(drives.at(0).toObject().value(QLatin1String("model")).toString(),
                 QStringLiteral("ST500NM0011"));
    }
};

QTEST_GUILESS_MAIN(TestWindowsService)

#include "tst_windows_service.moc"
