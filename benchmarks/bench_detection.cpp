// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// Detection of 99 drives that take 20 ms for each identifying request, beside that of one such drive.

#include "disk/ata_smart.h"
#include "disk/simulated_machine.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <benchmark/benchmark.h>

namespace {

QJsonArray slowDrives(int count)
{
    QJsonArray drives;
    for (int i = 0; i < count; ++i)
        drives.append(QJsonObject{{QStringLiteral("number"), i},
                                  {QStringLiteral("capacity"), 1000204886016.0},
                                  {QStringLiteral("identifyDelayMs"), 20}});
    return drives;
}

double secondsToDetect(int count)
{
    const SimulatedMachine machine(slowDrives(count));
    Workers workers;
    ATA_Smart inventory(machine.drives(), workers);
    bool isDone = false;
    QObject::connect(&inventory, &ATA_Smart::finishedScanSMART, [&isDone] { isDone = true; });
    QElapsedTimer timer;
    timer.start();
    inventory.detectDevices();
    while (!isDone)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    return inventory.devices().size() == count ? double(timer.nsecsElapsed()) * 1e-9 : -1;
}

void detection(benchmark::State &state)
{
    int argc = 0;
    const QCoreApplication application(argc, nullptr);
    for (auto _ : state) {
        const double one = secondsToDetect(1);
        const double all = secondsToDetect(99);
        if (one < 0 || all < 0)
            return state.SkipWithError("a drive was not found");
        state.SetIterationTime(all);
        state.counters["one_ms"] = one * 1e3;
        state.counters["ratio"] = all / one; // promised: at most 3
    }
}
BENCHMARK(detection)
    ->Name("99 drives of 20 ms a request beside one")
    ->UseManualTime()
    ->Iterations(5)
    ->Unit(benchmark::kMillisecond);

} // namespace
