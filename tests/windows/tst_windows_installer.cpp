// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "windows/service_installation.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTest>

namespace {

constexpr int kPatienceMs = 60000;

const QString kFolder = QStringLiteral("C:/Program Files/Halvex Service");
const QStringList kInstalled{QStringLiteral("HalvexLocalService.exe"), QStringLiteral("LICENSE.txt"),
                             QStringLiteral("halvexctl.exe"), QStringLiteral("uninstall.exe")};
const QStringList kSettings{QStringLiteral("HalvexService.ini")};

QStringList files()
{
    return QDir(kFolder).entryList(QDir::Files, QDir::Name);
}

QVariant installation(const char *name)
{
    return QSettings(QStringLiteral("HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\"
                                    "Uninstall\\Halvex Service"),
                     QSettings::NativeFormat)
        .value(QLatin1String(name));
}

} // namespace

/// The installer and its uninstaller, silent as an administrator's tools run them.
class TestWindowsInstaller : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void installsUpgradesAndUninstalls()
    {
        const QString port = QStringLiteral("Port");
        install({QStringLiteral("/FIREWALL")});
        QCOMPARE(files(), kInstalled);
        QCOMPARE(installation("DisplayVersion").toString(), QStringLiteral(HALVEX_VERSION));
        QVERIFY(QFile::exists(installation("InstallLocation").toString() + QStringLiteral("/uninstall.exe")));

        // A running service would write its own over it.
        QVERIFY(m_machine.stop());
        m_machine.setKeyValue(port, 5001);
        install({}); // over the first
        QCOMPARE(m_machine.keyValue(port).toInt(), 5001);

        uninstall({}, kSettings);
        install({});
        QCOMPARE(m_machine.keyValue(port).toInt(), 5001);
        uninstall({QStringLiteral("/REMOVEDATA")}, {});
        install({});
        QVERIFY(!m_machine.keyValue(port).isValid());
        uninstall({QStringLiteral("/REMOVEDATA")}, {});
    }

private:
    void install(const QStringList &options)
    {
        const Outcome outcome =
            runProgram(QStringLiteral(HALVEX_INSTALLER), QStringList{QStringLiteral("/S")} + options);
        QCOMPARE(outcome.exitCode, 0);
        QVERIFY(m_machine.waitFor(ServiceState::Running));
        QTRY_VERIFY_WITH_TIMEOUT(
            ServiceInstallation::greetingOverPipe().startsWith(QLatin1String("VER]![Halvex Service v")),
            kPatienceMs);
    }
    /// The uninstaller goes on in a copy of itself, which nobody can wait for but by what it leaves.
    void uninstall(const QStringList &options, const QStringList &left)
    {
        const Outcome outcome = runProgram(kFolder + QStringLiteral("/uninstall.exe"),
                                           QStringList{QStringLiteral("/S")} + options);
        QCOMPARE(outcome.exitCode, 0);
        QTRY_VERIFY_WITH_TIMEOUT(!installation("DisplayName").isValid() && files() == left, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(QDir(kFolder).exists(), !left.isEmpty(), kPatienceMs);
        QVERIFY(!m_machine.isInstalled());
    }

    ServiceInstallation m_machine; ///< whatever is installed here at the end is removed
};

QTEST_GUILESS_MAIN(TestWindowsInstaller)

#include "tst_windows_installer.moc"
