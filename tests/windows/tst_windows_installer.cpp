// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "windows/service_installation.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QTest>

namespace {

const QString kFolder = "C:/Program Files/Halvex Service";
const QString kWeb = "Halvex Web";
const QString kWebFolder = "C:/ProgramData/Halvex Web";
const QString kUninstaller = kFolder + "/uninstall.exe";

QString files()
{
    return QDir(kFolder).entryList(QDir::Files, QDir::Name).join(' ');
}

QString installation(const QString &name)
{
    const QSettings programs("HKEY_LOCAL_MACHINE\\Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall",
                             QSettings::NativeFormat);
    return programs.value("Halvex Service/" + name).toString();
}

} // namespace

/// The installer and its uninstaller, run silently as by an administrator's tools.
class TestWindowsInstaller : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void installsThePage()
    {
        install("/WEB");
        QVERIFY(files().contains("halvex-web.exe"));
        QTRY_COMPARE_WITH_TIMEOUT(m_manager.state(kWeb), ServiceState::Running, kPatienceMs);
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(kWebFolder + "/history.db"), kPatienceMs);
        install(); // over the first: the page stays
        QTRY_COMPARE_WITH_TIMEOUT(m_manager.state(kWeb), ServiceState::Running, kPatienceMs);
        uninstall("/REMOVEDATA", {});
        QVERIFY(!m_manager.isInstalled(kWeb));
        QVERIFY(!QDir(kWebFolder).exists());
    }

    void installsUpgradesAndUninstalls()
    {
        install("/FIREWALL");
        // The service has written its own values by now.
        QCOMPARE(files(), "HalvexLocalService.exe LICENSE.txt halvexctl.exe temperature.log uninstall.exe");
        QCOMPARE(installation("DisplayVersion"), HALVEX_VERSION);
        QVERIFY(QFile::exists(installation("InstallLocation") + "/uninstall.exe"));

        // A running service would overwrite the test's values.
        QVERIFY(m_machine.stop());
        m_machine.key().setValue("Port", 5001);
        install(); // over the first installation
        QCOMPARE(m_machine.key().value("Port").toInt(), 5001);

        uninstall("/S", "HalvexService.ini temperature.log");
        install();
        QCOMPARE(m_machine.key().value("Port").toInt(), 5001);
        uninstall("/REMOVEDATA", {});
        install();
        QVERIFY(!m_machine.key().contains("Port"));
        uninstall("/REMOVEDATA", {});
    }

private:
    void install(const QString &option = "/S")
    {
        QCOMPARE(runProgram(HALVEX_INSTALLER, {"/S", option}), QString());
        QVERIFY(m_machine.waitFor(ServiceState::Running));
        QTRY_VERIFY_WITH_TIMEOUT(ServiceInstallation::greetingOverPipe().startsWith("VER]![Halvex Service v"),
                                 kPatienceMs);
    }
    /// The uninstaller continues in a copy of itself, so the tests wait for the removal of its files.
    void uninstall(const QString &option, const QString &left)
    {
        QCOMPARE(runProgram(kUninstaller, {"/S", option}), QString());
        QTRY_VERIFY_WITH_TIMEOUT(installation("DisplayName").isEmpty() && files() == left, kPatienceMs);
        QTRY_COMPARE_WITH_TIMEOUT(QDir(kFolder).exists(), !left.isEmpty(), kPatienceMs);
        QVERIFY(!m_machine.isInstalled());
    }

    WindowsServiceManager m_manager;
    ServiceInstallation m_machine; ///< whatever is installed here at the end is removed
};

QTEST_GUILESS_MAIN(TestWindowsInstaller)

#include "tst_windows_installer.moc"
