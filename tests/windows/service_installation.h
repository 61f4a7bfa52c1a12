// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/windows/windows_service_manager.h"

#include <QByteArray>
#include <QIODevice>
#include <QJsonObject>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

/// What a run of a program came to.
struct Outcome
{
    int exitCode = 0x7FFFFFFF; ///< as it stands when the program did not end by itself
    QByteArray output;         ///< with bare line feeds
    QByteArray complaint;
};

/// Runs a program to its end.
[[nodiscard]] Outcome runProgram(const QString &path, const QStringList &arguments);

/// The built programs, copied into a folder of their own, for this machine's service manager. There is one
/// such service on a machine: whatever is installed when this begins or ends is stopped and removed.
class ServiceInstallation
{
public:
    ServiceInstallation();
    ~ServiceInstallation();
    ServiceInstallation(const ServiceInstallation &) = delete;
    ServiceInstallation &operator=(const ServiceInstallation &) = delete;

    /// The path of a file beside the programs, with the system's separators.
    [[nodiscard]] QString path(const QString &fileName) const;
    [[nodiscard]] quint16 port() const { return m_port; }

    /// Runs the service's program to its end.
    Outcome run(const QStringList &options) const;
    /// Runs halvexctl to its end.
    Outcome runConsole(const QStringList &arguments) const;

    /// Installs the service with a free port.
    [[nodiscard]] bool install();
    void setKeyValue(const QString &name, const QVariant &value);
    [[nodiscard]] QVariant keyValue(const QString &name) const;
    /// Replaces the simulated machine that services find in HALVEX_MACHINE; without drives at first.
    static void writeMachine(const QJsonObject &machine);

    [[nodiscard]] bool start();
    [[nodiscard]] bool stop();
    /// start(), and wait until the first detection has ended.
    [[nodiscard]] bool serve();
    [[nodiscard]] bool isInstalled();
    [[nodiscard]] bool waitFor(ServiceState state);

    /// The first line that a new console gets.
    [[nodiscard]] QString greetingOverTcp() const;
    [[nodiscard]] static QString greetingOverPipe();
    /// The answer that a new console gets to its first request.
    [[nodiscard]] QString ask(const QString &request) const;

private:
    void clear();

    QTemporaryDir m_directory;
    WindowsServiceManager m_manager;
    quint16 m_port = 0;
};
