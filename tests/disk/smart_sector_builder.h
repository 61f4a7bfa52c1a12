// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

/// Writes a slot of a S.M.A.R.T. data sector; `rawHex` holds the six raw bytes as they lie there.
inline void putAttribute(QByteArray &sector, int slot, int id, int flags, int current, int worst,
                         const char *rawHex)
{
    QByteArray entry;
    for (const int byte : {id, flags & 0xFF, flags >> 8, current, worst})
        entry.append(char(byte));
    sector.replace(2 + 12 * slot, 11, entry + QByteArray::fromHex(rawHex));
}
