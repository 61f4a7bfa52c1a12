// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTcpSocket>
#include <QTemporaryDir>

#include <memory>

/// How long anything may take that must happen, on a machine that is busy with much else; spent only by a
/// failing test.
inline constexpr int kPatienceMs = 150000;

/// A console that speaks the bare protocol: scrambles, unscrambles and waits for lines.
class RawConsole
{
public:
    /// Connects to the service on this machine, from one of its addresses; isConnected() tells.
    explicit RawConsole(quint16 port, const char *from = "127.0.0.1");

    [[nodiscard]] bool isConnected() const { return m_socket.state() == QAbstractSocket::ConnectedState; }
    [[nodiscard]] QTcpSocket &socket() { return m_socket; }

    void sendBytes(const QByteArray &bytes);
    void send(const QString &text);

    /// The next line's text; null when none comes in time or the connection ends.
    QString readLine();
    QString ask(const QString &text);

    /// Whether the service closes the connection in time.
    [[nodiscard]] bool waitForEnd();

private:
    QTcpSocket m_socket;
};

/// The built service as a process of its own, with a private home, machine file and port. Whatever is still
/// running when the test ends is killed.
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
    /// The environment that makes a program meet this service: HALVEX_HOME and HALVEX_MACHINE.
    [[nodiscard]] QProcessEnvironment environment() const { return m_environment; }

    /// Writes the machine file whole; the event log's key is added. The service sees the change at its next
    /// request.
    void writeMachine(QJsonObject machine);
    /// Puts a value into the service's key; before start().
    void setKeyValue(const QString &name, const QJsonValue &value) { m_key.insert(name, value); }
    /// What starts the program from now on, instead of starting it by itself: a command that takes another
    /// one.
    void setLauncher(const QStringList &words) { m_launcher = words; }
    /// Starts another program than the service's own from now on.
    void setProgram(const QString &path) { m_program = path; }
    void setVariable(const QString &name, const QString &value) { m_environment.insert(name, value); }

    /// Starts the program.
    void launch(const QStringList &arguments = {QStringLiteral("-exec")});
    /// launch(), and waits until the program has reported its port.
    [[nodiscard]] bool start(const QStringList &arguments = {QStringLiteral("-exec")});
    /// Waits until the first detection has ended.
    [[nodiscard]] bool waitUntilReady();
    /// start() and waitUntilReady().
    [[nodiscard]] bool serve();
    /// The reply to a console that stays connected from the first question on.
    QString ask(const QString &request);
    /// What a console that connects now is told first.
    [[nodiscard]] QString firstLine() const { return RawConsole(m_port).readLine(); }
    [[nodiscard]] int descriptors() const;

    /// Asks politely; the exit code, or -1 when the program did not end by itself in time.
    [[nodiscard]] int stop();

    /// Pauses the service, or lets it go on, by the program's own option, and waits until a console sees it.
    [[nodiscard]] bool pause() { return control(QStringLiteral("-pause"), true); }
    [[nodiscard]] bool resume() { return control(QStringLiteral("-resume"), false); }

    /// Sends the service a control request of its own kind (0 to 127) and returns whether it was delivered.
    [[nodiscard]] bool command(int code) const;

    /// The events written so far, one a line, as the file has them.
    [[nodiscard]] QByteArray events() const;
    /// What the program has printed; for failure messages.
    [[nodiscard]] QByteArray output();

private:
    [[nodiscard]] bool control(const QString &option, bool pauses);
    [[nodiscard]] quint16 reportedPort() const;

    QTemporaryDir m_directory;
    QJsonObject m_key;
    QProcessEnvironment m_environment;
    QStringList m_launcher;
    QString m_program;
    QProcess m_process;
    QByteArray m_output;
    std::unique_ptr<RawConsole> m_console;
    quint16 m_port = 0;
};

/// The object that a text describes, most often a machine. Dumps of real drives lie in "drives/".
[[nodiscard]] QJsonObject json(const QByteArray &text);
