// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QtGlobal>

/// A surface scan requested by a console or the schedule. Sectors of 512 bytes, both ends inclusive.
struct ScanRequest
{
    qint32 device = 0;
    qint32 blockSize = 0; ///< bytes
    qint64 firstSector = 0;
    qint64 lastSector = 0;
};
