// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
// The temperature log of ten years: its query beside the plain read, and the whole file through the service
// beside what a shell would do.

#include "proc_status.h"

#include "monitor/temperature_log.h"
#include "process/service_fixture.h"

#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

/// The log of ten drives over three years, a record of each every 180 seconds: 42 MB.
class LongLog
{
public:
    LongLog()
        : m_path(temperatureLogIn(m_folder.path() + QLatin1Char('/')))
    {
        QByteArray records;
        records.reserve(kDrives * kUpdates * 8);
        for (int i = 0; i < kUpdates; ++i) {
            const QDateTime moment = start().addSecs(180 * qint64(i));
            const QDate date = moment.date();
            const QTime time = moment.time();
            for (int drive = 0; drive < kDrives; ++drive) {
                for (const int value : {date.year() - 2000, date.month(), date.day(), time.hour(),
                                        time.minute(), time.second(), drive, 30 + drive})
                    records += char(value + 33);
            }
        }
        QFile file(m_path);
        if (!file.open(QIODevice::WriteOnly) || file.write(records) != records.size())
            qFatal("the log cannot be written");
    }

    [[nodiscard]] const QString &path() const { return m_path; }

private:
    static constexpr int kDrives = 10;
    static constexpr int kUpdates = 525000;

    static QDateTime start() { return {QDate(2024, 1, 1), QTime(0, 0), Qt::UTC}; }

    QTemporaryDir m_folder;
    QString m_path;
};

const LongLog &longLog()
{
    static const LongLog log;
    return log;
}

void readFile(benchmark::State &state)
{
    const QString path = longLog().path();
    for ([[maybe_unused]] auto _ : state) {
        QFile file(path);
        if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
            state.SkipWithError("the log cannot be read");
        QByteArray chunk(1 << 18, Qt::Uninitialized);
        while (file.read(chunk.data(), chunk.size()) > 0)
            benchmark::DoNotOptimize(chunk.constData());
    }
}
BENCHMARK(readFile)->Unit(benchmark::kMillisecond);

void history(benchmark::State &state, const char *from, const char *to)
{
    const QString path = longLog().path();
    int records = 0;
    for ([[maybe_unused]] auto _ : state) {
        const QString text = temperatureHistory(path, QLatin1String(from), QLatin1String(to));
        records = text.size() / 8;
    }
    state.counters["records"] = records;
}
BENCHMARK_CAPTURE(history, lastDay, "261227000000", "261227235959")->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(history, wholeFile, "000101000000", "991231235959")->Unit(benchmark::kMillisecond);

bool serveLongLog(ServiceFixture &service)
{
    service.writeMachine({});
    return QFile::copy(longLog().path(), temperatureLogIn(service.home() + QLatin1Char('/'))) &&
           service.serve();
}

/// A console that has been greeted.
class Console : public RawConsole
{
public:
    explicit Console(const ServiceFixture &service)
        : RawConsole(service.port())
    {
        if (readLine().isNull())
            qFatal("no greeting");
    }
};

const QString kWholeFile = QStringLiteral("GSTATD]![000101000000]![991231235959");

/// Reads the line that is on its way as fast as it comes, without a look at it; its size.
qint64 takeLine(RawConsole &console)
{
    QByteArray chunk(1 << 20, Qt::Uninitialized);
    qint64 size = 0;
    bool ended = false;
    while (!ended && (console.socket().bytesAvailable() > 0 || console.socket().waitForReadyRead())) {
        const qint64 taken = console.socket().read(chunk.data(), chunk.size());
        if (taken <= 0)
            break;
        size += taken;
        ended = chunk.at(int(taken) - 1) == '\n';
    }
    return size;
}

void throughTheService(benchmark::State &state)
{
    ServiceFixture service;
    if (!serveLongLog(service))
        return state.SkipWithError("the service does not start");
    Console console(service);
    qint64 size = 0;
    for ([[maybe_unused]] auto _ : state) {
        console.send(kWholeFile);
        size = takeLine(console);
    }
    const double peak = procStatusKiB(service.process().processId(), "VmHWM") * 1024;
    state.counters["reply_MB"] = double(size) / 1e6;
    state.counters["peak_memory_per_reply"] = peak / double(size);
}
BENCHMARK(throughTheService)
    ->Name("whole file through the service")
    ->UseRealTime()
    ->Unit(benchmark::kMillisecond);

void throughTheShell(benchmark::State &state)
{
    const QString pipe = QStringLiteral("cat '%1' | base64 -w0 | xxd -p >/dev/null").arg(longLog().path());
    for ([[maybe_unused]] auto _ : state) {
        if (QProcess::execute(QStringLiteral("sh"), {QStringLiteral("-c"), pipe}) != 0)
            return state.SkipWithError("the pipe does not run");
    }
}
BENCHMARK(throughTheShell)->Name("cat | base64 | xxd -p")->UseRealTime()->Unit(benchmark::kMillisecond);

/// How long a second console waits at most for a short answer while the whole file is on its way.
void longestWait(benchmark::State &state)
{
    ServiceFixture service;
    if (!serveLongLog(service))
        return state.SkipWithError("the service does not start");
    Console reader(service);
    Console other(service);
    qint64 longest = 0;
    for ([[maybe_unused]] auto _ : state) {
        reader.send(kWholeFile);
        qint64 size = 0;
        while (size == 0) {
            QElapsedTimer wait;
            wait.start();
            if (other.ask(QStringLiteral("DEVCOUNT")).isNull())
                return state.SkipWithError("no answer");
            longest = std::max(longest, wait.nsecsElapsed());
            if (reader.socket().waitForReadyRead(0))
                size = takeLine(reader);
        }
    }
    state.counters["longest_wait_ms"] = double(longest) / 1e6;
}
BENCHMARK(longestWait)->Name("another console meanwhile")->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
