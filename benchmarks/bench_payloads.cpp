// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/payloads.h"
#include "wire/separators.h"

#include <QStringList>

#include <benchmark/benchmark.h>

namespace {

/// Returns a machine as large as the service takes: 99 drives with 30 attributes each.
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
    device.smart.attributes = QVector<AttributeEntry>(30, attribute);
    return DeviceList(99, device);
}

/// Returns the attributes as SmartTexts makes them.
QString joinedAttributes(const DeviceList &devices)
{
    QStringList texts;
    for (int i = 0; i < devices.size(); ++i)
        texts += payload::smartAttributes(i, devices[i].smart.attributes);
    return texts.join(kItemSeparator);
}

void allSmart(benchmark::State &state)
{
    const DeviceList devices = largeMachine();
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(joinedAttributes(devices));
}

/// Returns the same text made the short way.
QString filledPlaceholders(const DeviceList &devices)
{
    QStringList items;
    for (int i = 0; i < devices.size(); ++i) {
        for (const AttributeEntry &attribute : devices[i].smart.attributes) {
            items += QStringLiteral("%1~;%2~;%3~;%4~;%5~;%6~;%7~;%8~;%9~;%10")
                         .arg(i)
                         .arg(attribute.id)
                         .arg(attribute.flags)
                         .arg(attribute.notPrefailure)
                         .arg(attribute.flagBit2)
                         .arg(attribute.reserved)
                         .arg(attribute.current)
                         .arg(attribute.raw)
                         .arg(attribute.worst)
                         .arg(attribute.threshold);
        }
    }
    return items.join(QStringLiteral("]~["));
}

void allSmartByPlaceholders(benchmark::State &state)
{
    const DeviceList devices = largeMachine();
    if (filledPlaceholders(devices) != joinedAttributes(devices))
        state.SkipWithError("the texts differ");
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(filledPlaceholders(devices));
}

} // namespace

BENCHMARK(allSmart)->Unit(benchmark::kMicrosecond);
BENCHMARK(allSmartByPlaceholders)->Unit(benchmark::kMicrosecond);
