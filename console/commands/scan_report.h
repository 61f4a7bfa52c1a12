// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/inventory.h"
#include "console/client/scans.h"
#include "console/render/style.h"
#include "console/scan_progress.h"

#include <QJsonArray>
#include <QStringList>
#include <QVector>

#include <optional>

/// A drive's scan with what is known besides.
struct ScanReport
{
    client::ScanStatus status;
    client::Drive drive;
    std::optional<double> bytesPerSecond;
};

[[nodiscard]] QStringList scanLines(const QVector<ScanReport> &reports, const render::Style &style);
[[nodiscard]] QJsonArray scanArray(const QVector<ScanReport> &reports);

/// "running", "failed", "done", "stopped" or "never": what the latest scan came to.
[[nodiscard]] QString scanStateText(const client::ScanStatus &status);
