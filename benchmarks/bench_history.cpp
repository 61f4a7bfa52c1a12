// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_log.h"

#include <QDateTime>
#include <QFile>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

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
        qint64 size = 0;
        while ((size = file.read(chunk.data(), chunk.size())) > 0)
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

} // namespace
