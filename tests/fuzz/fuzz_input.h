// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

#include <cstdlib>

/// Tries one input; each fuzzer has its own.
void fuzz(const QByteArray &bytes);

/// What must be so whatever the bytes were; the fuzzer keeps those that prove it wrong.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}
