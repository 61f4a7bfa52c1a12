// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

inline QByteArray bytesOf(const uint8_t *data, size_t size)
{
    return {reinterpret_cast<const char *>(data), static_cast<int>(size)};
}

/// What must be so whatever the bytes were; the fuzzer keeps those that prove it wrong.
inline void require(bool holds)
{
    if (!holds)
        std::abort();
}
