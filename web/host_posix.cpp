// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/host.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSocketNotifier>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <ctime>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
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

double secondsOf(const timeval &time)
{
    return double(time.tv_sec) + double(time.tv_usec) / 1e6;
}

} // namespace

void endConnection(quintptr socket, const QByteArray &lastBytes)
{
    if (!lastBytes.isEmpty())
        send(int(socket), lastBytes.constData(), size_t(lastBytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
    shutdown(int(socket), SHUT_RDWR);
}

QString lastSocketError()
{
    return errno != 0 ? qt_error_string(errno) : QString();
}

void reportStarted(const QString &text)
{
    std::printf("%s\n", text.toUtf8().constData());
    std::fflush(stdout);
}

void reportFailure(const QString &text)
{
    std::fprintf(stderr, "halvex-web: %s\n", text.toUtf8().constData());
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

std::shared_ptr<void> hideTyping()
{
    termios shown{};
    if (tcgetattr(STDIN_FILENO, &shown) != 0)
        return nullptr;
    termios hidden = shown;
    hidden.c_lflag &= ~tcflag_t(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    return {stdin, [shown](void *) {
                tcsetattr(STDIN_FILENO, TCSAFLUSH, &shown);
                std::fputs("\n", stderr);
            }};
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

bool makePrivateFolder(const QString &path)
{
    const QFileInfo folder(path);
    if (folder.isDir())
        return true;
    return QDir().mkpath(folder.path()) && ::mkdir(QFile::encodeName(path).constData(), S_IRWXU) == 0;
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
