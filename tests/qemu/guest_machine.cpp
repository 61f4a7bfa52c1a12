// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "qemu/guest_machine.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QJsonDocument>
#include <QRegularExpression>
#include <QTest>

#include <chrono>
#include <optional>

namespace {

using namespace std::chrono_literals;

/// How long anything may take that must happen; a machine without a processor of its own is slow.
constexpr auto kPatience = 120s;
constexpr int kPatienceMs = 120000;

const QString kInitrd = QStringLiteral("initrd");
const QString kShell = QStringLiteral("shell");
const QString kMonitor = QStringLiteral("monitor");
constexpr char kEndMark[] = "@@ ";

/// The next line of `socket`, without its end; nullopt when none comes in time.
std::optional<QByteArray> readLine(QLocalSocket &socket, const QDeadlineTimer &deadline)
{
    while (!socket.canReadLine()) {
        if (!socket.waitForReadyRead(int(deadline.remainingTime())) && !socket.canReadLine())
            return std::nullopt;
    }
    QByteArray line = socket.readLine();
    line.chop(line.endsWith("\r\n") ? 2 : 1);
    return line;
}

/// What a script beside this file prints; nullopt after a message when it fails.
std::optional<QString> runScript(const QString &name, const QStringList &arguments = {})
{
    QProcess script;
    script.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    script.start(QStringLiteral(HALVEX_QEMU_SCRIPTS "/") + name, arguments);
    if (script.waitForFinished(kPatienceMs) && script.exitStatus() == QProcess::NormalExit &&
        script.exitCode() == 0)
        return QString::fromLocal8Bit(script.readAllStandardOutput()).trimmed();
    qWarning("%s failed", qPrintable(name));
    return std::nullopt;
}

} // namespace

GuestMachine::~GuestMachine()
{
    m_process.kill();
    m_process.waitForFinished();
}

bool GuestMachine::boot(const QStringList &programs, const QStringList &devices, quint16 guestPort)
{
    const std::optional<QString> kernel = runScript(QStringLiteral("kernel"));
    if (!kernel || !runScript(QStringLiteral("make-initrd"), QStringList{*kernel, path(kInitrd)} + programs))
        return false;
    const QStringList images =
        QDir(*kernel + QStringLiteral("/boot")).entryList({QStringLiteral("vmlinuz-*")}, QDir::Files);
    if (images.size() != 1) {
        qWarning("there is not one kernel in %s", qPrintable(*kernel));
        return false;
    }
    startQemu(*kernel + QStringLiteral("/boot/") + images.first(), devices, guestPort);
    return connectTo(m_monitor, kMonitor) && connectTo(m_shell, kShell) && !readMessage().isEmpty() &&
           !order(QStringLiteral("qmp_capabilities")).isEmpty() && readAnswer().exitCode == 0 && findPort();
}

void GuestMachine::startQemu(const QString &kernel, const QStringList &devices, quint16 guestPort)
{
    const auto listener = [this](const QString &name) {
        return path(name) + QStringLiteral(",server=on,wait=off");
    };
    const QString options =
        QStringLiteral("-accel tcg -machine pc -cpu max -m 512 -nodefaults -no-user-config -no-reboot "
                       "-display none -serial stdio -serial chardev:shell -device e1000,netdev=net");
    // The clock of a machine without a processor of its own is not to be trusted.
    const QString kernelOptions = QStringLiteral("console=ttyS0 mitigations=off tsc=unstable panic=-1");
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.start(
        QStringLiteral("qemu-system-x86_64"),
        options.split(QLatin1Char(' ')) +
            QStringList{
                QStringLiteral("-kernel"), kernel, QStringLiteral("-initrd"), path(kInitrd),
                QStringLiteral("-append"), kernelOptions, QStringLiteral("-chardev"),
                QStringLiteral("socket,id=shell,path=") + listener(kShell), QStringLiteral("-qmp"),
                QStringLiteral("unix:") + listener(kMonitor), QStringLiteral("-netdev"),
                QStringLiteral("user,id=net,restrict=on,hostfwd=tcp:127.0.0.1:0-:%1").arg(guestPort)} +
            devices);
}

bool GuestMachine::connectTo(QLocalSocket &socket, const QString &name)
{
    return QTest::qWaitFor(
               [&] {
                   socket.connectToServer(path(name));
                   return socket.waitForConnected() || m_process.state() == QProcess::NotRunning;
               },
               kPatienceMs) &&
           socket.state() == QLocalSocket::ConnectedState;
}

/// The port is any that was free; QEMU tells it in a table for people.
bool GuestMachine::findPort()
{
    const QString table = order(QStringLiteral("human-monitor-command"),
                                {{QStringLiteral("command-line"), QStringLiteral("info usernet")}})
                              .value(QLatin1String("return"))
                              .toString();
    static const QRegularExpression expression(
        QStringLiteral("HOST_FORWARD\\S*\\s+\\d+\\s+127\\.0\\.0\\.1\\s+(\\d+)"));
    m_port = expression.match(table).captured(1).toUShort();
    return m_port != 0;
}

GuestMachine::Answer GuestMachine::run(const QByteArray &commandLine)
{
    m_shell.write(commandLine + '\n');
    return readAnswer();
}

GuestMachine::Answer GuestMachine::readAnswer()
{
    const QDeadlineTimer deadline(kPatience);
    Answer answer;
    while (const std::optional<QByteArray> line = readLine(m_shell, deadline)) {
        if (line->startsWith(kEndMark)) {
            answer.exitCode = line->mid(int(qstrlen(kEndMark))).toInt();
            break;
        }
        answer.output += *line + '\n';
    }
    return answer;
}

bool GuestMachine::waitFor(const QByteArray &commandLine)
{
    return QTest::qWaitFor([&] { return run(commandLine).exitCode == 0; }, kPatienceMs);
}

QJsonObject GuestMachine::readMessage()
{
    const std::optional<QByteArray> line = readLine(m_monitor, QDeadlineTimer(kPatience));
    return QJsonDocument::fromJson(line.value_or(QByteArray())).object();
}

QJsonObject GuestMachine::order(const QString &command, const QJsonObject &arguments)
{
    const QJsonObject message{{QStringLiteral("execute"), command}, {QStringLiteral("arguments"), arguments}};
    m_monitor.write(QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n');
    QJsonObject reply = readMessage();
    while (reply.contains(QLatin1String("event")))
        reply = readMessage();
    return reply;
}

bool GuestMachine::pull(const QString &device)
{
    if (!order(QStringLiteral("device_del"), {{QStringLiteral("id"), device}})
             .contains(QLatin1String("return")))
        return false;
    const QJsonObject place{{QStringLiteral("path"), QStringLiteral("/machine/peripheral/") + device}};
    return QTest::qWaitFor(
        [&] { return order(QStringLiteral("qom-list"), place).contains(QLatin1String("error")); },
        kPatienceMs);
}

QByteArray GuestMachine::kernelLog()
{
    m_process.waitForReadyRead(0);
    return m_process.readAll();
}
