// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "process/service_fixture.h"

#include "protocol/scrambling.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QSaveFile>
#include <QTest>

#include <chrono>
#include <csignal>

namespace {

using namespace std::chrono_literals;

/// How long anything may take that must happen; far beyond what it takes, and spent only by a failing test.
constexpr auto kPatience = 60s;
constexpr int kPatienceMs = 60000;

void writeJson(const QString &path, const QJsonObject &object)
{
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QJsonDocument(object).toJson()) < 0 || !file.commit())
        qFatal("cannot write %s", qPrintable(path));
}

} // namespace

RawConsole::RawConsole(quint16 port)
{
    m_socket.connectToHost(QStringLiteral("127.0.0.1"), port);
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
    const QDeadlineTimer deadline(kPatience);
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
    const QDeadlineTimer deadline(kPatience);
    while (m_socket.state() != QAbstractSocket::UnconnectedState && !deadline.hasExpired()) {
        m_socket.readAll();
        m_socket.waitForDisconnected(100);
    }
    return m_socket.state() == QAbstractSocket::UnconnectedState;
}

ServiceFixture::ServiceFixture()
    : m_environment(QProcessEnvironment::systemEnvironment())
{
    m_environment.insert(QStringLiteral("HALVEX_HOME"), home());
    m_environment.insert(QStringLiteral("HALVEX_MACHINE"), path(QStringLiteral("machine.json")));
    m_key.insert(QStringLiteral("ImagePath"), path(QStringLiteral("halvex-monitor-service")));
    m_key.insert(QStringLiteral("Port"), 0); // any free one
    m_process.setProcessChannelMode(QProcess::MergedChannels);
}

ServiceFixture::~ServiceFixture()
{
    if (m_process.state() != QProcess::NotRunning) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

QProcessEnvironment ServiceFixture::environment() const
{
    return m_environment;
}

void ServiceFixture::writeMachine(QJsonObject machine)
{
    machine.insert(QStringLiteral("eventLog"), QStringLiteral("events.jsonl"));
    writeJson(path(QStringLiteral("machine.json")), machine);
}

void ServiceFixture::setKeyValue(const QString &name, const QJsonValue &value)
{
    m_key.insert(name, value);
}

void ServiceFixture::setVariable(const QString &name, const QString &value)
{
    m_environment.insert(name, value);
}

bool ServiceFixture::start(const QStringList &arguments)
{
    if (!QFile::exists(path(QStringLiteral("service-key.json"))))
        writeJson(path(QStringLiteral("service-key.json")), m_key);
    QFile::remove(path(QStringLiteral("events.jsonl")));
    m_process.setProcessEnvironment(m_environment);
    m_process.start(QStringLiteral(HALVEX_SERVICE_PROGRAM), arguments);
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
    return QTest::qWaitFor(
        [this] { return RawConsole(m_port).readLine().startsWith(QLatin1String("VER]![")); }, kPatienceMs);
}

bool ServiceFixture::serve()
{
    return start() && waitUntilReady();
}

int ServiceFixture::stop()
{
    ::kill(pid_t(m_process.processId()), SIGTERM);
    if (!m_process.waitForFinished(kPatienceMs) || m_process.exitStatus() != QProcess::NormalExit)
        return -1;
    return m_process.exitCode();
}

/// The option tells nobody whether the service has heard it: just started, it may not listen yet.
void ServiceFixture::control(const QString &option)
{
    QProcess program;
    program.setProcessEnvironment(m_environment);
    program.start(QStringLiteral(HALVEX_SERVICE_PROGRAM), {option});
    program.waitForFinished(kPatienceMs);
}

bool ServiceFixture::isPaused() const
{
    return RawConsole(m_port).readLine() == QLatin1String("PAUSED");
}

bool ServiceFixture::pause()
{
    const auto isDone = [this] {
        control(QStringLiteral("-pause"));
        return isPaused();
    };
    return QTest::qWaitFor(isDone, kPatienceMs);
}

bool ServiceFixture::resume()
{
    const auto isDone = [this] {
        control(QStringLiteral("-resume"));
        return !isPaused();
    };
    return QTest::qWaitFor(isDone, kPatienceMs);
}

QStringList ServiceFixture::eventTexts() const
{
    QFile file(path(QStringLiteral("events.jsonl")));
    QStringList texts;
    if (!file.open(QIODevice::ReadOnly))
        return texts;
    while (!file.atEnd())
        texts << QJsonDocument::fromJson(file.readLine()).object().value(QLatin1String("text")).toString();
    return texts;
}

quint16 ServiceFixture::reportedPort() const
{
    static const QRegularExpression expression(QStringLiteral("^Binding to port: (\\d+)\\."));
    for (const QString &text : eventTexts()) {
        const QRegularExpressionMatch match = expression.match(text);
        if (match.hasMatch())
            return match.captured(1).toUShort();
    }
    return 0;
}

QByteArray ServiceFixture::output()
{
    m_output += m_process.readAll();
    return m_output;
}

QJsonObject realDrive(int number, const QString &dumpName)
{
    return {{QStringLiteral("number"), number},
            {QStringLiteral("dump"), drivesFixturePath() + QLatin1Char('/') + dumpName}};
}

QString drivesFixturePath()
{
    return QStringLiteral(HALVEX_DRIVES_FIXTURE);
}
