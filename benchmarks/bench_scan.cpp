// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// Measures surface scans of the built service beside dd, and the answer times during eight scans.
// HALVEX_SCAN_GIB sets the size of the surface (4). Needs root, for loop devices and to drop the page cache.

#include "process/service_fixture.h"

#include "wire/scrambling.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>

#include <benchmark/benchmark.h>

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <vector>

namespace {

constexpr double kGiB = 1024.0 * 1024 * 1024;
constexpr qint64 kAreaBytes = qint64(102400) * 512;
constexpr double kAreaPauseSeconds = 0.001;

qint64 surfaceBytes()
{
    bool isSet = false;
    const int gibibytes = qEnvironmentVariableIntValue("HALVEX_SCAN_GIB", &isSet);
    return qint64(isSet ? gibibytes : 4) * 1024 * 1024 * 1024;
}

bool run(const QString &program, const QStringList &arguments)
{
    return QProcess::execute(program, arguments) == 0;
}

/// A file of bytes that the file system cannot leave out, and a loop device over it.
class Surface
{
public:
    Surface()
    {
        m_file = m_directory.filePath(QStringLiteral("surface"));
        const QString megabytes = QStringLiteral("count=%1").arg(surfaceBytes() >> 20);
        if (!run(QStringLiteral("dd"), {QStringLiteral("if=/dev/urandom"), QStringLiteral("of=") + m_file,
                                        QStringLiteral("bs=1M"), megabytes, QStringLiteral("status=none")}))
            return;
        QProcess losetup;
        losetup.start(QStringLiteral("losetup"),
                      {QStringLiteral("--find"), QStringLiteral("--show"), m_file});
        losetup.waitForFinished();
        m_loop = QString::fromLocal8Bit(losetup.readAll()).trimmed();
    }
    ~Surface()
    {
        if (!m_loop.isEmpty())
            run(QStringLiteral("losetup"), {QStringLiteral("--detach"), m_loop});
    }
    Surface(const Surface &) = delete;
    Surface &operator=(const Surface &) = delete;

    [[nodiscard]] QString path(bool asLoop) const { return asLoop ? m_loop : m_file; }

private:
    // Beside the program: a directory for temporary files may lie in memory, where dd cannot read directly.
    QTemporaryDir m_directory{QDir::current().absoluteFilePath(QStringLiteral("surface-XXXXXX"))};
    QString m_file;
    QString m_loop;
};

const Surface &surface()
{
    static const Surface theSurface;
    return theSurface;
}

void dropCaches()
{
    ::sync();
    QFile file(QStringLiteral("/proc/sys/vm/drop_caches"));
    if (file.open(QIODevice::WriteOnly))
        file.write("3\n");
}

struct Cost
{
    double seconds = 0;
    double cpuSeconds = 0;
};

double seconds(const timeval &time)
{
    return double(time.tv_sec) + double(time.tv_usec) * 1e-6;
}

double cpuOfChildren()
{
    rusage usage{};
    ::getrusage(RUSAGE_CHILDREN, &usage);
    return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double cpuOf(qint64 processId)
{
    QFile status(QStringLiteral("/proc/%1/stat").arg(processId));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = status.readAll().split(' '); // the program's name holds no blank
    return double(fields.value(13).toLongLong() + fields.value(14).toLongLong()) /
           double(::sysconf(_SC_CLK_TCK));
}

Cost costOfDd(const QString &path, int blockSize)
{
    dropCaches();
    const double cpuBefore = cpuOfChildren();
    QElapsedTimer timer;
    timer.start();
    const bool ok =
        run(QStringLiteral("dd"),
            {QStringLiteral("if=") + path, QStringLiteral("of=/dev/null"), QStringLiteral("iflag=direct"),
             QStringLiteral("bs=%1").arg(blockSize), QStringLiteral("status=none")});
    return ok ? Cost{double(timer.nsecsElapsed()) * 1e-9, cpuOfChildren() - cpuBefore} : Cost{};
}

QJsonObject imageDrive(int number, const QString &image)
{
    return {{QStringLiteral("number"), number},
            {QStringLiteral("model"), QStringLiteral("SURFACE")},
            {QStringLiteral("capacity"), double(surfaceBytes())},
            {QStringLiteral("image"), image}};
}

QString startScan(int drive, int blockSize)
{
    return QStringLiteral("STARTSCAN]![%1]![%2]![0]![%3")
        .arg(drive)
        .arg(blockSize)
        .arg(surfaceBytes() / 512 - 1);
}

/// Returns index, state, percent, first, current and time of the first drive, and its bad ranges if there are
/// any.
QStringList scanState(RawConsole &console)
{
    return console.ask(QStringLiteral("GSTATSCAN")).split(QLatin1Char(';'));
}

Cost costOfScan(const QString &path, int blockSize)
{
    ServiceFixture service;
    service.writeMachine({{QStringLiteral("drives"), QJsonArray{imageDrive(0, path)}}});
    if (!service.serve())
        return {};
    RawConsole console(service.port());
    if (console.readLine().isNull())
        return {};
    dropCaches();
    const double cpuBefore = cpuOf(service.process().processId());
    QElapsedTimer timer;
    timer.start();
    console.ask(startScan(0, blockSize));
    while (scanState(console).value(1) == QLatin1String("1"))
        QTest::qSleep(10);
    const QStringList state = scanState(console);
    if (state.size() != 6 || state.at(2) != QLatin1String("100"))
        return {}; // it did not read what it was to read
    return {double(timer.nsecsElapsed()) * 1e-9, cpuOf(service.process().processId()) - cpuBefore};
}

void scanBesideDd(benchmark::State &state)
{
    const QString path = surface().path(state.range(0) == 1);
    const int blockSize = int(state.range(1));
    const double size = double(surfaceBytes());
    for (auto _ : state) {
        costOfDd(path, blockSize); // below a virtual disk lies another cache, which is filled for both alike
        const Cost scan = costOfScan(path, blockSize);
        const Cost dd = costOfDd(path, blockSize);
        if (scan.seconds <= 0 || dd.seconds <= 0)
            return state.SkipWithError("scan or dd failed");
        state.SetIterationTime(scan.seconds);
        const double pauses = kAreaPauseSeconds * size / double(kAreaBytes);
        state.counters["scan_MB/s"] = size / scan.seconds / 1e6;
        state.counters["dd_MB/s"] = size / dd.seconds / 1e6;
        state.counters["ratio"] = (dd.seconds + pauses) / scan.seconds; // dd is charged the pauses, too
        state.counters["scan_cpu_s/GiB"] = scan.cpuSeconds / (size / kGiB);
        state.counters["dd_cpu_s/GiB"] = dd.cpuSeconds / (size / kGiB);
    }
}
BENCHMARK(scanBesideDd)
    ->Name("whole surface beside dd iflag=direct")
    ->ArgNames({"loop", "block"})
    ->ArgsProduct({{0, 1}, {65536, 262144}})
    ->UseManualTime()
    ->Iterations(1);

/// Measures the median time of ALLSMARTINFO, requested a hundred times a second.
void answerTimes(benchmark::State &state)
{
    constexpr int kDrives = 8;
    constexpr int kQuestions = 500;
    ServiceFixture service;
    QJsonArray drives;
    for (int i = 0; i < kDrives; ++i)
        drives.append(imageDrive(i, surface().path(false)));
    service.writeMachine({{QStringLiteral("drives"), drives}});
    if (!service.serve())
        return state.SkipWithError("the service does not start");
    RawConsole console(service.port());
    if (console.readLine().isNull())
        return state.SkipWithError("no greeting");
    for (auto _ : state) {
        for (int i = 0; i < kDrives && state.range(0) == 1; ++i)
            console.ask(startScan(i, 65536));
        std::vector<qint64> times;
        for (int i = 0; i < kQuestions; ++i) {
            QElapsedTimer timer;
            timer.start();
            if (console.ask(QStringLiteral("ALLSMARTINFO")).isNull())
                return state.SkipWithError("an answer is missing");
            times.push_back(timer.nsecsElapsed());
            QTest::qSleep(10);
        }
        std::nth_element(times.begin(), times.begin() + kQuestions / 2, times.end());
        state.SetIterationTime(double(times[kQuestions / 2]) * 1e-9);
        state.counters["answers"] = kQuestions;
    }
}
BENCHMARK(answerTimes)
    ->Name("median of 500 ALLSMARTINFO")
    ->ArgName("eight scans")
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Iterations(1)
    ->Unit(benchmark::kMicrosecond);

} // namespace
