// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include "wire/scrambling.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QHostAddress>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

#include <csignal>

namespace {

void writeJson(const QString &path, const QJsonObject &object)
{
    if (!replaceFile(path, QJsonDocument(object).toJson()))
        qFatal("cannot write %s", qPrintable(path));
}

} // namespace

RawConsole::RawConsole(quint16 port, const char *from)
{
    m_socket.bind(QHostAddress(QString::fromLatin1(from)));
    m_socket.connectToHost("127.0.0.1", port);
    m_socket.waitForConnected(kPatienceMs);
}

void RawConsole::sendBytes(const QByteArray &bytes)
{
    m_socket.write(bytes);
    while (m_socket.bytesToWrite() > 0 && m_socket.waitForBytesWritten(kPatienceMs)) {
    }
}

void RawConsole::send(const QString &text)
{
    sendBytes(sendReply(text, [] { return 42; }));
}

QString RawConsole::readLine()
{
    const QDeadlineTimer deadline(kPatienceMs);
    while (!m_socket.canReadLine()) {
        if (!m_socket.waitForReadyRead(int(deadline.remainingTime())) && !m_socket.canReadLine())
            return {};
    }
    QByteArray line = m_socket.readLine();
    line.replace('\r', "").replace('\n', "");
    return unscramble(line);
}

QString RawConsole::ask(const QString &text)
{
    send(text);
    return readLine();
}

bool RawConsole::waitForEnd()
{
    const QDeadlineTimer deadline(kPatienceMs);
    while (m_socket.state() != QAbstractSocket::UnconnectedState && !deadline.hasExpired()) {
        m_socket.readAll();
        m_socket.waitForDisconnected(100);
    }
    return m_socket.state() == QAbstractSocket::UnconnectedState;
}

ServiceFixture::ServiceFixture()
    : m_environment(QProcessEnvironment::systemEnvironment())
    , m_program(HALVEX_SERVICE_PROGRAM)
{
    m_environment.insert("HALVEX_HOME", home());
    m_environment.insert("HALVEX_MACHINE", path("machine.json"));
    m_key.insert("ImagePath", path("halvex-monitor-service"));
    m_key.insert("Port", 0); // any free port
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    QFile::link(HALVEX_DRIVES_FIXTURE, path("drives"));
}

ServiceFixture::~ServiceFixture()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

void ServiceFixture::writeMachine(QJsonObject machine)
{
    machine.insert("eventLog", "events.jsonl");
    writeJson(path("machine.json"), machine);
}

void ServiceFixture::launch(const QStringList &arguments)
{
    if (!QFile::exists(path("service-key.json")))
        writeJson(path("service-key.json"), m_key);
    QFile::remove(path("events.jsonl"));
    m_console.reset();
    m_launchOffset = output().size();
    m_process.setProcessEnvironment(m_environment);
    const QStringList words = m_launcher + QStringList{m_program} + arguments;
    m_process.start(words.first(), words.mid(1));
}

bool ServiceFixture::start(const QStringList &arguments)
{
    launch(arguments);
    if (!m_process.waitForStarted(kPatienceMs))
        return false;
    return QTest::qWaitFor(
               [this] {
                   m_port = reportedPort();
                   return m_port != 0 || m_process.state() == QProcess::NotRunning;
               },
               kPatienceMs) &&
           m_port != 0;
}

bool ServiceFixture::waitUntilReady()
{
    return QTest::qWaitFor([this] { return ask("VER").startsWith("VER]!["); }, kPatienceMs);
}

bool ServiceFixture::serve()
{
    return start() && waitUntilReady();
}

QString ServiceFixture::ask(const QString &request)
{
    if (!m_console) {
        m_console = std::make_unique<RawConsole>(m_port);
        m_console->readLine();
    }
    return m_console->ask(request);
}

int ServiceFixture::descriptors() const
{
    const QDir directory(QString("/proc/%1/fd").arg(processId()));
    return int(directory.entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size());
}

int ServiceFixture::stop()
{
    ::kill(pid_t(processId()), SIGTERM);
    if (!m_process.waitForFinished(kPatienceMs) || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

/// Repeats the option: it does not report whether a service that is still starting has received it.
bool ServiceFixture::control(const QString &option, bool pauses)
{
    const auto isDone = [&] {
        QProcess program;
        program.setProcessEnvironment(m_environment);
        program.start(HALVEX_SERVICE_PROGRAM, {option});
        program.waitForFinished(kPatienceMs);
        const QString line = firstLine();
        return !line.isNull() && (line == "PAUSED") == pauses;
    };
    return QTest::qWaitFor(isDone, kPatienceMs);
}

bool ServiceFixture::command(int code) const
{
    QProcess program;
    program.setProcessEnvironment(m_environment);
    program.start(HALVEX_SERVICE_PROGRAM, {"-command", QString::number(code)});
    return program.waitForFinished(kPatienceMs) && program.exitCode() == 0;
}

QByteArray ServiceFixture::content(const QString &fileName) const
{
    return contentOf(path(fileName));
}

quint16 ServiceFixture::reportedPort()
{
    const QByteArray report =
        m_environment.contains("HALVEX_MACHINE") ? events() : output().mid(m_launchOffset);
    static const QRegularExpression expression("(?:Binding to|Listening) port: (\\d+)\\D");
    return expression.match(QString::fromUtf8(report)).captured(1).toUShort();
}

QByteArray ServiceFixture::output()
{
    m_output += m_process.readAll();
    return m_output;
}

QJsonObject json(const QByteArray &text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text);
    if (!document.isObject())
        qFatal("no JSON object: %s", text.constData());
    return document.object();
}
