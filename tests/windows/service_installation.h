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

/// The limit for anything that must happen; only a failing test takes as long.
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

/// The built programs, copied into a folder of their own, for this machine's service manager. There is one
/// such service on a machine: whatever is installed when this begins or ends is stopped and removed.
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

    /// The path of a file beside the programs, with the system's separators.
    [[nodiscard]] QString path(const QString &fileName) const
    {
        return QDir::toNativeSeparators(m_directory.filePath(kName + '/' + fileName));
    }

    /// Runs the service's program, or halvexctl. The arguments have a blank between them.
    QString run(const QString &options) const
    {
        return runProgram(path("HalvexLocalService.exe"), options.split(' ', Qt::SkipEmptyParts));
    }
    /// Starts the program as a regular application; Wine's tracing of it goes to $HALVEX_TRACE.
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

    /// The service's key in the registry. It may be another one after each installation.
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
    /// start(), and wait until the first detection has ended.
    [[nodiscard]] bool serve()
    {
        return start() &&
               QTest::qWaitFor([this] { return greetingOverTcp().startsWith("VER]!["); }, kPatienceMs);
    }

    /// The first line that a new console gets.
    [[nodiscard]] QString greetingOverTcp() const { return ask({}); }
    [[nodiscard]] static QString greetingOverPipe()
    {
        QLocalSocket socket;
        socket.connectToServer("HalvexService001");
        return readLine(socket);
    }
    /// The answer that a new console gets to its first request; its greeting when there is none.
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
