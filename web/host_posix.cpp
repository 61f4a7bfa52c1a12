// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/host.h"

#include <QDir>
#include <QFile>
#include <QSocketNotifier>

#include <array>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <termios.h>
#include <unistd.h>

namespace web::host {

namespace {

int stopPipe[2] = {-1, -1}; // a signal handler reaches nothing but file scope

void noteStop(int)
{
    const char byte = 0;
    [[maybe_unused]] const ssize_t written = write(stopPipe[1], &byte, 1);
}

template <typename Address>
QByteArray bytesOf(const Address &address)
{
    return {reinterpret_cast<const char *>(&address), int(sizeof address)};
}

double secondsOf(const timeval &time)
{
    return double(time.tv_sec) + double(time.tv_usec) / 1e6;
}

std::optional<QString> readLine()
{
    QFile input;
    if (!input.open(stdin, QIODevice::ReadOnly))
        return std::nullopt;
    QByteArray line = input.readLine();
    if (line.isEmpty())
        return std::nullopt;
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

} // namespace

QByteArray socketAddress(const QHostAddress &address, quint16 port)
{
    if (address.protocol() == QAbstractSocket::IPv4Protocol) {
        sockaddr_in result{};
        result.sin_family = AF_INET;
        result.sin_port = htons(port);
        result.sin_addr.s_addr = htonl(address.toIPv4Address());
        return bytesOf(result);
    }
    sockaddr_in6 result{};
    result.sin6_family = AF_INET6;
    result.sin6_port = htons(port);
    const Q_IPV6ADDR bytes = address.toIPv6Address();
    std::memcpy(&result.sin6_addr, bytes.c, sizeof bytes.c);
    return bytesOf(result);
}

QHostAddress addressOf(const sockaddr *address)
{
    const QHostAddress result(address);
    bool isIpv4 = false;
    const quint32 ipv4 = result.toIPv4Address(&isIpv4);
    return isIpv4 ? QHostAddress(ipv4) : result;
}

void endConnection(quintptr socket, const QByteArray &lastBytes)
{
    if (!lastBytes.isEmpty())
        send(int(socket), lastBytes.constData(), size_t(lastBytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
    shutdown(int(socket), SHUT_RDWR);
}

std::unique_ptr<QObject> watchStopRequests(std::function<void()> requested)
{
    if (pipe2(stopPipe, O_CLOEXEC | O_NONBLOCK) != 0)
        return nullptr;
    auto notifier = std::make_unique<QSocketNotifier>(stopPipe[0], QSocketNotifier::Read);
    QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                     [requested = std::move(requested)] {
                         std::array<char, 16> bytes{};
                         [[maybe_unused]] const ssize_t count = read(stopPipe[0], bytes.data(), bytes.size());
                         requested();
                     });
    struct sigaction action
    {
    };
    action.sa_handler = noteStop;
    action.sa_flags = SA_RESTART;
    sigaction(SIGTERM, &action, nullptr);
    sigaction(SIGINT, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGPIPE, &action, nullptr);
    return notifier;
}

std::optional<QString> readPassword(const QString &prompt)
{
    termios attributes{};
    if (tcgetattr(STDIN_FILENO, &attributes) != 0)
        return readLine();
    termios hidden = attributes;
    hidden.c_lflag &= ~tcflag_t(ECHO);
    std::fputs(qPrintable(prompt), stderr);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    auto line = readLine();
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &attributes);
    std::fputs("\n", stderr);
    return line;
}

metrics::ProcessFigures processFigures()
{
    metrics::ProcessFigures figures;
    rusage usage{};
    if (getrusage(RUSAGE_SELF, &usage) == 0)
        figures.cpuSeconds = secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime);
    // Fields of proc(5): 20 after the name are the start in clock ticks since boot, the sizes in bytes and
    // pages.
    QFile stat(QStringLiteral("/proc/self/stat"));
    const QByteArray text = stat.open(QIODevice::ReadOnly) ? stat.readAll() : QByteArray();
    const QList<QByteArray> fields = text.mid(text.lastIndexOf(')') + 2).split(' ');
    timespec sinceBoot{};
    timespec now{};
    if (fields.size() > 21 && clock_gettime(CLOCK_BOOTTIME, &sinceBoot) == 0 &&
        clock_gettime(CLOCK_REALTIME, &now) == 0) {
        const double bootTime = double(now.tv_sec - sinceBoot.tv_sec);
        figures.startTime = bootTime + fields.at(19).toDouble() / double(sysconf(_SC_CLK_TCK));
        figures.virtualBytes = fields.at(20).toLongLong();
        figures.residentBytes = fields.at(21).toLongLong() * sysconf(_SC_PAGESIZE);
    }
    figures.openDescriptors =
        QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
    rlimit descriptors{};
    if (getrlimit(RLIMIT_NOFILE, &descriptors) == 0)
        figures.mostDescriptors = qint64(descriptors.rlim_cur);
    return figures;
}

QString defaultConfigurationFile(const QString &)
{
    return QStringLiteral("/etc/halvex/web.json");
}

QString defaultStateFolder()
{
    return QStringLiteral("/var/lib/halvex-web");
}

bool supportsTls()
{
    return true;
}

} // namespace web::host
