// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_volumes.h"
#include "rows.h"
#include "windows/service_installation.h"

#include <QFile>

/// The built service under the service manager, and both transports of consoles.
class TestWindowsService : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void installsOnce()
    {
        ServiceInstallation service;
        const QString program = service.path("HalvexLocalService.exe");
        QCOMPARE(service.run("-install"),
                 "The service Halvex Service has been installed under: " + program + '\n');
        QStringList values;
        for (const char *name : {"ImagePath", "Description", "ObjectName", "Start", "Type"})
            values << service.key().value(name).toString();
        // It starts automatically, in a process of its own, and is interactive.
        QCOMPARE(values, QStringList({program, "Halvex Local Service", "LocalSystem", "2", "272"}));

        QCOMPARE(service.run("-install"), "The service Halvex Service is already installed\n");
        const QString version = service.run("-version");
        QVERIFY2(version.endsWith("\n\nis installed and not running\n\n"), qPrintable(version));
        for (const char *options : {"", "--help"})
            QCOMPARE(service.run(options), "The service Halvex Service could not start\nexit code -4");
        QCOMPARE(service.run("-uninstall"), "The service Halvex Service has been uninstalled.\n");
        QCOMPARE(service.run("-uninstall"), "The service Halvex Service is not installed\n");
    }

    void installsUnderAnAccountOutsideTheCodePage()
    {
        ServiceInstallation service;
        service.run(QString("-install LAB\\") + QString::fromUtf8("Łucja漢 secret"));
        QCOMPARE(service.key().value("ObjectName").toString(), QString::fromUtf8("LAB\\Łucja漢"));
    }

    void secondInstanceIsRefused()
    {
        ServiceInstallation service;
        QVERIFY(service.install());
        QVERIFY(service.serve());
        const QString refused = "The service Halvex Service could not start\n"
                                "another service is running: it has the pipe HalvexService001\nexit code -4";
        QCOMPARE(service.run("-exec"), refused);
        QVERIFY(service.stop());
        QVERIFY(service.serve());
    }

    void volumes()
    {
        WindowsVolumes volumes;
        const QStringList names = volumes.volumeNames();
        const QString name = volumes.volumeNameAt("C:\\").value_or(QString());
        QVERIFY2(names.contains(name) && name.startsWith("\\\\?\\Volume{"), qPrintable(name));
        QVERIFY((volumes.logicalDrives() & 4U) != 0); // C:
        QCOMPARE(volumes.driveType("C:"), VolumeSystem::kFixedDrive);
        const VolumeSpace space = volumes.space("C:\\").value_or(VolumeSpace());
        QVERIFY(space.freeBytes > 0 && space.totalBytes > space.freeBytes);
        QCOMPARE(volumes.information("C:\\").value_or(VolumeInformation()).fileSystem, "NTFS");
        QCOMPARE(volumes.deviceNumber("\\\\.\\C:").value_or(-1), 0);
        QVERIFY(!volumes.space("Q:\\") && !volumes.information("Q:\\") && !volumes.volumeNameAt("Q:\\"));
    }

    void runsUnderTheManager()
    {
        ServiceInstallation service;
        QVERIFY(service.install());
        QVERIFY(service.serve());
        QVERIFY(service.run("-version").endsWith("\n\nis installed and running\n\n"));
        const QString greeting = service.greetingOverTcp();
        QVERIFY2(greeting.startsWith("VER]![Halvex Service v 5.0.5"), qPrintable(greeting));
        // Without the console's own number.
        const auto common = [](const QString &line) { return line.section("]![", 0, 19); };
        QCOMPARE(common(ServiceInstallation::greetingOverPipe()), common(greeting));

        QCOMPARE(service.run("-pause"), QString());
        QVERIFY(service.waitFor(ServiceState::Paused));
        QCOMPARE(service.greetingOverTcp(), "PAUSED");
        QCOMPARE(ServiceInstallation::greetingOverPipe(), "PAUSED");
        QCOMPARE(service.run("-resume"), QString());
        QVERIFY(service.waitFor(ServiceState::Running));
        QVERIFY(service.greetingOverTcp().startsWith("VER]!["));

        QCOMPARE(service.run("-terminate"), QString()); // it has stopped: otherwise there would be a warning
        QVERIFY(service.run("-version").endsWith("and not running\n\n"));
        QVERIFY(service.serve()); // a second start
    }

    void readsItsKey_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QVariant>("stored");
        QTest::addColumn<int>("used"); // the values that a service that has read it writes back
        row("number → used", "FreeSpacePollInterval", QVariant(360000), 360000);
        row("above the range → default", "SMARTPollInterval", QVariant(-1), 180);
        row("text → default", "SMARTPollInterval", QVariant("60"), 180);
        row("64-bit number → default", "FreeSpacePollInterval", QVariant(qlonglong(60)), 300);
        row("list of texts → default", "Port", QVariant(QStringList{"6000"}), 5000);
        row("no value → default", "Port", QVariant(), 5000);
    }

    void readsItsKey()
    {
        QFETCH(QString, name);
        QFETCH(QVariant, stored);
        ServiceInstallation service;
        QVERIFY(service.install());
        service.key().setValue(name, stored);
        QVERIFY(service.start());
        QVERIFY(service.stop());
        QTEST(service.key().value(name).toInt(), "used");
    }

    void keepsItsFilesBesideTheProgram()
    {
        ServiceInstallation service;
        QVERIFY(service.install());
        QVERIFY(service.serve());
        const QString port = service.key().value("Port").toString();
        service.runConsole("settings set smtpServer=mail.example --port " + port);
        QVERIFY(QFile::exists(service.path("temperature.log")));
        QVERIFY(service.stop());
        QVERIFY(QFile::exists(service.path("HalvexService.ini")));
        QVERIFY(service.serve());
        const QString settings = service.runConsole("settings --port " + port);
        QVERIFY2(settings.contains("mail.example"), qPrintable(settings));
    }
};

QTEST_GUILESS_MAIN(TestWindowsService)

#include "tst_windows_service.moc"
