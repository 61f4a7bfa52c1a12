// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/simulated/machine_state.h"

#include <QByteArray>

/// The 512-byte sectors of an ATA drive (ATA/ATAPI Command Set 3; SFF-8035i for the attributes and their
/// thresholds).

[[nodiscard]] QByteArray identifySector(const DriveState &drive);
[[nodiscard]] QByteArray smartDataSector(const SmartState &smart);
[[nodiscard]] QByteArray smartThresholdSector(const SmartState &smart);

/// Returns whether a pre-failure attribute is at or below its threshold: the drive predicts its failure.
[[nodiscard]] bool predictsFailure(ByteView smartData, ByteView smartThresholds);
