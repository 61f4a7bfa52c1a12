// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "files.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <memory>

/// Limit of every wait, on a busy machine; only a failing test takes as long.
inline constexpr int kPatienceMs = 150000;

/// A console of the plain protocol: scrambles, unscrambles and waits for lines.
class RawConsole
{
public:
    /// Connects to the service on this machine, from one of its addresses. Check isConnected() afterwards.
    explicit RawConsole(quint16 port, const char *from = "127.0.0.1");

    [[nodiscard]] bool isConnected() const { return m_socket.state() == QAbstractSocket::ConnectedState; }
    [[nodiscard]] QTcpSocket &socket() { return m_socket; }

    void sendBytes(const QByteArray &bytes);
    void send(const QString &text);

    /// Returns the next line's text; null if none arrives in time or the connection ends.
    QString readLine();
    QString ask(const QString &text);

    /// Returns whether the service closes the connection in time.
    [[nodiscard]] bool waitForEnd();

private:
    QTcpSocket m_socket;
};

/// The built service as a process of its own, with a private home, machine file and port. The destructor
/// kills it.
class ServiceFixture
{
public:
    ServiceFixture();
    ~ServiceFixture();
    ServiceFixture(const ServiceFixture &) = delete;
    ServiceFixture &operator=(const ServiceFixture &) = delete;

    [[nodiscard]] QString home() const { return m_directory.path(); }
    [[nodiscard]] QString path(const QString &fileName) const { return m_directory.filePath(fileName); }
    [[nodiscard]] quint16 port() const { return m_port; }
    [[nodiscard]] QProcess &process() { return m_process; }
    [[nodiscard]] qint64 processId() const { return m_process.processId(); }
    /// Returns the environment for programs that use this service: HALVEX_HOME and HALVEX_MACHINE.
    [[nodiscard]] QProcessEnvironment environment() const { return m_environment; }

    /// Replaces the machine file, with the event log's key added. The service uses it from its next request
    /// on.
    void writeMachine(QJsonObject machine);
    /// Sets a value of the service's key; before start().
    void setKeyValue(const QString &name, const QJsonValue &value) { m_key.insert(name, value); }
    /// Sets a command that starts the program from now on, with the program as its last argument.
    void setLauncher(const QStringList &words) { m_launcher = words; }
    /// Sets another program instead of the service's own.
    void setProgram(const QString &path) { m_program = path; }
    void setVariable(const QString &name, const QString &value) { m_environment.insert(name, value); }
    /// Selects the system's own drives. The service then reports its port in the log.
    void unsetMachine()
    {
        m_environment.remove("HALVEX_MACHINE");
        setVariable("QT_LOGGING_RULES", "halvex.protocol.info=true");
    }

    /// Starts the program.
    void launch(const QStringList &arguments = {"-exec"});
    /// Calls launch() and waits until the program has reported its port.
    [[nodiscard]] bool start(const QStringList &arguments = {"-exec"});
    /// Waits until the first detection has ended.
    [[nodiscard]] bool waitUntilReady();
    /// Calls start() and waitUntilReady().
    [[nodiscard]] bool serve();
    /// Returns the reply to `request` on a connection that all calls share.
    QString ask(const QString &request);
    /// Returns the first line of a new connection.
    [[nodiscard]] QString firstLine() const { return RawConsole(m_port).readLine(); }
    [[nodiscard]] int descriptors() const;

    /// Requests the program to end; returns its exit code, or -1 if it does not end in time.
    [[nodiscard]] int stop();

    /// Pauses or resumes the service by the program's own option, and waits until a console sees it.
    [[nodiscard]] bool pause() { return control("-pause", true); }
    [[nodiscard]] bool resume() { return control("-resume", false); }

    /// Sends the service a custom command (0 to 127) and returns whether it was delivered.
    [[nodiscard]] bool command(int code) const;

    /// Returns the events written so far, one per line, as in the file.
    [[nodiscard]] QByteArray events() const { return content(QStringLiteral("events.jsonl")); }
    /// Returns the content of a file in the home; empty if it cannot be read.
    [[nodiscard]] QByteArray content(const QString &fileName) const;
    /// Returns the program's output; for failure messages.
    [[nodiscard]] QByteArray output();

private:
    [[nodiscard]] bool control(const QString &option, bool pauses);
    [[nodiscard]] quint16 reportedPort();

    QTemporaryDir m_directory;
    QJsonObject m_key;
    QProcessEnvironment m_environment;
    QStringList m_launcher;
    QString m_program;
    QProcess m_process;
    QByteArray m_output;
    std::unique_ptr<RawConsole> m_console;
    int m_launchOffset = 0; ///< in the output
    quint16 m_port = 0;
};

/// Parses a JSON object, usually a machine. Dumps of real drives are in "drives/".
[[nodiscard]] QJsonObject json(const QByteArray &text);
