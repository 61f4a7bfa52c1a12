// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/payloads.h"

#include <benchmark/benchmark.h>

namespace {

/// A machine as large as the service takes: 99 drives with 30 attributes each.
DeviceList largeMachine()
{
    AttributeEntry attribute;
    attribute.id = 194;
    attribute.flags = 0x32;
    attribute.current = 100;
    attribute.worst = 98;
    attribute.threshold = 6;
    attribute.raw = 123456789;
    DeviceRecord device;
    device.attributes = QVector<AttributeEntry>(30, attribute);
    return DeviceList(99, device);
}

void allSmart(benchmark::State &state)
{
    const DeviceList devices = largeMachine();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(payload::allSmart(devices));
}

} // namespace

BENCHMARK(allSmart)->Unit(benchmark::kMicrosecond);
