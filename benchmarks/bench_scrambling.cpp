// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "wire/scrambling.h"

#include "protocol/plain_scrambling.h"

#include <benchmark/benchmark.h>

namespace {

/// The short one is a usual command, the long one the S.M.A.R.T. reply of a large machine.
QString sampleText(const benchmark::State &state)
{
    return QStringLiteral("0~;194~;2~;1~;1~;0~;240~;25~;240~;0]~[")
        .repeated(int(state.range(0)))
        .left(int(state.range(0)));
}

constexpr int kOffset = 37;

void countBytes(benchmark::State &state)
{
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

void scrambling(benchmark::State &state)
{
    const QString text = sampleText(state);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(scramble(text, kOffset));
    countBytes(state);
}

void scramblingPlainly(benchmark::State &state)
{
    const QString text = sampleText(state);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(plain::scramble(text, kOffset));
    countBytes(state);
}

void unscrambling(benchmark::State &state)
{
    const QByteArray line = scramble(sampleText(state), kOffset);
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(unscramble(line));
    countBytes(state);
}

void unscramblingPlainly(benchmark::State &state)
{
    const QString line = QString::fromLatin1(scramble(sampleText(state), kOffset));
    for ([[maybe_unused]] auto _ : state)
        benchmark::DoNotOptimize(plain::unscramble(line));
    countBytes(state);
}

} // namespace

BENCHMARK(scrambling)->Arg(12)->Arg(100'000);
BENCHMARK(scramblingPlainly)->Arg(12)->Arg(100'000);
BENCHMARK(unscrambling)->Arg(12)->Arg(100'000);
BENCHMARK(unscramblingPlainly)->Arg(12)->Arg(100'000);
