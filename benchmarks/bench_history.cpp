// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
// The temperature log of many years: its query beside the plain read, and the whole file through the service
// beside what a shell would do.

#include "process/proc_status.h"

#include "monitor/temperature_history.h"
#include "process/service_fixture.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <algorithm>

namespace {

const QDate kLastDay(2029, 12, 25);

/// The log of ten drives with a record of each every 180 seconds, up to the end of the last day: 42 MB for
/// three years.
class LongLog
{
public:
    explicit LongLog(int updates)
        : m_path(temperatureLogIn(m_folder.path() + QLatin1Char('/')))
    {
        constexpr int kUpdatesAtATime = 10000;
        QFile file(m_path);
        if (!file.open(QIODevice::WriteOnly))
            qFatal("the log cannot be written");
        const QDateTime end(kLastDay.addDays(1), QTime(0, 0), Qt::UTC);
        QByteArray records;
        for (int i = updates; i > 0; --i) {
            append(records, end.addSecs(-180 * qint64(i)));
            if ((i - 1) % kUpdatesAtATime == 0) {
                if (file.write(records) != records.size())
                    qFatal("the log cannot be written");
                records.clear();
            }
        }
    }

    [[nodiscard]] const QString &path() const { return m_path; }

private:
    static void append(QByteArray &records, const QDateTime &moment)
    {
        constexpr int kDrives = 10;
        const QDate date = moment.date();
        const QTime time = moment.time();
        for (int drive = 0; drive < kDrives; ++drive) {
            for (const int value : {date.year() - 2000, date.month(), date.day(), time.hour(), time.minute(),
                                    time.second(), drive, 30 + drive})
                records += char(value + 33);
        }
    }

    QTemporaryDir m_folder;
    QString m_path;
};

constexpr int kUpdates = 525000;

const LongLog &longLog()
{
    static const LongLog log(kUpdates);
    return log;
}

/// Thirty years: 420 MB.
const LongLog &longestLog()
{
    static const LongLog log(10 * kUpdates);
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

void history(benchmark::State &state, const LongLog &(*logOf)(), const QDate &from)
{
    int argc = 0;
    const QCoreApplication application(argc, nullptr); // for the slices of the index
    Workers workers;
    TemperatureHistory log(logOf().path(), {}, workers);
    const HistoryPeriod period{{from, QTime(0, 0)}, {kLastDay, QTime(23, 59, 59)}};
    qint64 records = 0;
    const auto readAll = [&records](HistoryReader reader) {
        while (!reader.next().isEmpty()) {
        }
        records = reader.textBytes() / 8;
    };
    for (log.find(period, readAll); records == 0;) // indexes the log, which is not measured
        QCoreApplication::processEvents();
    for ([[maybe_unused]] auto _ : state)
        log.find(period, readAll);
    state.counters["records"] = double(records);
}
BENCHMARK_CAPTURE(history, lastDayOf42MB, longLog, kLastDay)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(history, lastDayOf420MB, longestLog, kLastDay)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(history, whole42MB, longLog, QDate(2000, 1, 1))->Unit(benchmark::kMillisecond);

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
    const double peak = procStatus(service.process().processId(), "VmHWM") * 1024;
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

/// Measures the longest wait of a second console for a short reply while the whole file is sent.
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
