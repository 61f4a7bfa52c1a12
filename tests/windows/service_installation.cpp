// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "windows/service_installation.h"

#include "protocol/scrambling.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QLocalSocket>
#include <QProcess>
#include <QSaveFile>
#include <QSettings>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace {

/// How long anything may take that must happen; spent only by a failing test.
constexpr int kPatienceMs = 60000;

const QString kServiceName = QStringLiteral("Halvex Service");
const QString kProgram = QStringLiteral("HalvexLocalService.exe");
const QString kConsole = QStringLiteral("halvexctl.exe");

QSettings serviceKey()
{
    return {QStringLiteral("HKEY_LOCAL_MACHINE\\System\\CurrentControlSet\\Services\\") + kServiceName,
            QSettings::NativeFormat};
}

quint16 freePort()
{
    QTcpServer probe;
    return probe.listen() ? probe.serverPort() : quint16(0);
}

QString readLine(QIODevice &device)
{
    while (!device.canReadLine()) {
        if (!device.waitForReadyRead(kPatienceMs))
            return {};
    }
    return unscramble(device.readLine().trimmed());
}

} // namespace

Outcome runProgram(const QString &path, const QStringList &arguments)
{
    QProcess process;
    process.start(path, arguments);
    Outcome outcome;
    if (process.waitForFinished(kPatienceMs) && process.exitStatus() == QProcess::NormalExit)
        outcome.exitCode = process.exitCode();
    outcome.output = process.readAllStandardOutput().replace("\r\n", "\n");
    outcome.complaint = process.readAllStandardError().replace("\r\n", "\n");
    return outcome;
}

ServiceInstallation::ServiceInstallation()
{
    clear();
    if (qEnvironmentVariableIsSet("HALVEX_MACHINE"))
        writeMachine({});
    // A blank in the path, as in the folder of an ordinary installation.
    QDir(m_directory.path()).mkdir(kServiceName);
    QFile::copy(QStringLiteral(HALVEX_SERVICE_PROGRAM), path(kProgram));
    QFile::copy(QStringLiteral(HALVEX_CONSOLE_PROGRAM), path(kConsole));
}

ServiceInstallation::~ServiceInstallation()
{
    clear();
}

void ServiceInstallation::clear()
{
    if (isInstalled()) {
        m_manager.control(kServiceName, service_control::kStop);
        if (!waitFor(ServiceState::Stopped))
            qWarning("the service does not stop");
        m_manager.uninstall(kServiceName);
    }
}

QString ServiceInstallation::path(const QString &fileName) const
{
    return QDir::toNativeSeparators(m_directory.filePath(kServiceName + QLatin1Char('/') + fileName));
}

Outcome ServiceInstallation::run(const QStringList &options) const
{
    return runProgram(path(kProgram), options);
}

Outcome ServiceInstallation::runConsole(const QStringList &arguments) const
{
    return runProgram(path(kConsole), arguments);
}

bool ServiceInstallation::install()
{
    if (run({QStringLiteral("-install")}).exitCode != 0)
        return false;
    m_port = freePort();
    setKeyValue(QStringLiteral("Port"), int(m_port));
    return true;
}

void ServiceInstallation::setKeyValue(const QString &name, const QVariant &value)
{
    serviceKey().setValue(name, value);
}

QVariant ServiceInstallation::keyValue(const QString &name) const
{
    return serviceKey().value(name);
}

void ServiceInstallation::writeMachine(const QJsonObject &machine)
{
    QSaveFile file(qEnvironmentVariable("HALVEX_MACHINE"));
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(machine).toJson()) < 0 || !file.commit())
        qFatal("no machine file");
}

bool ServiceInstallation::start()
{
    return m_manager.start(kServiceName, {}).ok() && waitFor(ServiceState::Running);
}

bool ServiceInstallation::stop()
{
    return run({QStringLiteral("-terminate")}).exitCode == 0 && waitFor(ServiceState::Stopped);
}

bool ServiceInstallation::serve()
{
    return start() &&
           QTest::qWaitFor([this] { return greetingOverTcp().startsWith(QLatin1String("VER]![")); },
                           kPatienceMs);
}

bool ServiceInstallation::isInstalled()
{
    return m_manager.isInstalled(kServiceName);
}

bool ServiceInstallation::waitFor(ServiceState state)
{
    return QTest::qWaitFor([&] { return m_manager.state(kServiceName) == state; }, kPatienceMs);
}

QString ServiceInstallation::greetingOverTcp() const
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
    return socket.waitForConnected(kPatienceMs) ? readLine(socket) : QString();
}

QString ServiceInstallation::greetingOverPipe()
{
    QLocalSocket socket;
    socket.connectToServer(QStringLiteral("HalvexService001"));
    return socket.waitForConnected(kPatienceMs) ? readLine(socket) : QString();
}

QString ServiceInstallation::ask(const QString &request) const
{
    QTcpSocket socket;
    socket.connectToHost(QStringLiteral("127.0.0.1"), m_port);
    if (!socket.waitForConnected(kPatienceMs) || readLine(socket).isEmpty())
        return {};
    socket.write(sendReply(request, [] { return 42; }));
    return readLine(socket);
}
