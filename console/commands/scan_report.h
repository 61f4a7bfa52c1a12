// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/inventory.h"
#include "client/scans.h"
#include "console/render/style.h"

#include <QStringList>
#include <QVector>

#include <optional>

/// The scan of a drive.
struct ScanReport
{
    client::ScanStatus status;
    client::Drive drive;
    std::optional<double> bytesPerSecond;
};

/// Returns the text of `scan status`. With `isFollowing`, running scans come first and drives without a scan
/// are left out. Drives that were never scanned share one line if there is more than one.
[[nodiscard]] QStringList scanLines(QVector<ScanReport> reports, const render::Style &style,
                                    bool isFollowing = false);
