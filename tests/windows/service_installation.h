// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/windows/windows_service_manager.h"
#include "wire/scrambling.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QProcess>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

/// Limit of every wait; only a failing test takes as long.
constexpr int kPatienceMs = 60000;

/// Runs a program to its end. Returns its output, with bare line feeds, and its exit code if that is not 0.
inline QString runProgram(const QString &path, const QStringList &arguments)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(path, arguments);
    if (!process.waitForFinished(kPatienceMs))
        return path + " does not end";
    const QString output = QString::fromLocal8Bit(process.readAll().replace("\r\n", "\n"));
    return process.exitCode() == 0 ? output : output + "exit code " + QString::number(process.exitCode());
}

/// The built programs, copied into a folder of their own, and this machine's service manager. A machine has
/// one such service: the constructor and the destructor stop and remove an installed one.
class ServiceInstallation
{
public:
    ServiceInstallation()
    {
        clear();
        QDir(m_directory.path()).mkdir(kName); // with a blank, as the folder of an ordinary installation
        QFile::copy(HALVEX_SERVICE_PROGRAM, path("HalvexLocalService.exe"));
        QFile::copy(HALVEX_CONSOLE_PROGRAM, path("halvexctl.exe"));
    }
    ~ServiceInstallation() { clear(); }
    ServiceInstallation(const ServiceInstallation &) = delete;
    ServiceInstallation &operator=(const ServiceInstallation &) = delete;

    /// Returns the path of a file beside the programs, with the system's separators.
    [[nodiscard]] QString path(const QString &fileName) const
    {
        return QDir::toNativeSeparators(m_directory.filePath(kName + '/' + fileName));
    }

    /// Runs the service's program, or halvexctl, with arguments separated by blanks.
    QString run(const QString &options) const
    {
        return runProgram(path("HalvexLocalService.exe"), options.split(' ', Qt::SkipEmptyParts));
    }
    /// Starts the program as a regular application. Wine writes its trace to $HALVEX_TRACE.
    [[nodiscard]] std::unique_ptr<QProcess> execute(const QString &wineDebug) const
    {
        auto process = std::make_unique<QProcess>();
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert("WINEDEBUG", wineDebug);
        process->setProcessEnvironment(environment);
        process->start(path("HalvexLocalService.exe"), {"-exec"});
        const bool isReady =
            QTest::qWaitFor([this] { return greetingOverTcp().startsWith("VER]!["); }, kPatienceMs);
        return isReady ? std::move(process) : nullptr;
    }
    QString runConsole(const QString &arguments) const
    {
        return runProgram(path("halvexctl.exe"), arguments.split(' '));
    }

    /// Installs the service with a free port.
    [[nodiscard]] bool install()
    {
        QTcpServer probe;
        if (!probe.listen() || !run("-install").startsWith("The service"))
            return false;
        key().setValue("Port", int(probe.serverPort()));
        return true;
    }

    /// Opens the service's key in the registry, which each installation replaces.
    [[nodiscard]] QSettings key() const
    {
        return {"HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\" + kName, QSettings::NativeFormat};
    }

    [[nodiscard]] bool isInstalled() { return m_manager.isInstalled(kName); }
    [[nodiscard]] bool waitFor(ServiceState state)
    {
        return QTest::qWaitFor([&] { return m_manager.state(kName) == state; }, kPatienceMs);
    }
    [[nodiscard]] bool start() { return m_manager.start(kName, {}).ok() && waitFor(ServiceState::Running); }
    [[nodiscard]] bool stop() { return run("-terminate").isEmpty() && waitFor(ServiceState::Stopped); }
    /// Calls start() and waits until the first detection has ended.
    [[nodiscard]] bool serve()
    {
        return start() &&
               QTest::qWaitFor([this] { return greetingOverTcp().startsWith("VER]!["); }, kPatienceMs);
    }

    /// Returns the first line of a new connection.
    [[nodiscard]] QString greetingOverTcp() const { return ask({}); }
    [[nodiscard]] static QString greetingOverPipe()
    {
        QLocalSocket socket;
        socket.connectToServer("HalvexService001");
        return readLine(socket);
    }
    /// Returns the answer to the first request of a new connection, or its greeting if there is none.
    [[nodiscard]] QString ask(const QString &request) const
    {
        QTcpSocket socket;
        socket.connectToHost("127.0.0.1", quint16(key().value("Port").toInt()));
        const QString greeting = readLine(socket);
        if (request.isEmpty() || greeting.isEmpty())
            return greeting;
        socket.write(sendReply(request, [] { return 42; }));
        return readLine(socket);
    }

private:
    static QString readLine(QIODevice &device)
    {
        while (!device.canReadLine()) {
            if (!device.waitForReadyRead(kPatienceMs))
                return {};
        }
        return unscramble(device.readLine().trimmed());
    }

    void clear()
    {
        if (!isInstalled())
            return;
        m_manager.control(kName, service_control::kStop);
        if (!waitFor(ServiceState::Stopped))
            qWarning("the service does not stop");
        m_manager.uninstall(kName);
    }

    const QString kName = "Halvex Service";
    QTemporaryDir m_directory;
    WindowsServiceManager m_manager;
};
