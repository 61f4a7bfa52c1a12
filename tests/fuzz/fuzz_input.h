// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

#include <cstdlib>

/// Tries one input; each fuzzer has its own.
void fuzz(const QByteArray &bytes);

/// Aborts if an invariant does not hold, so that the fuzzer keeps the input.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}
