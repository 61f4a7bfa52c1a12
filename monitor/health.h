// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "disk/device_record.h"
#include "monitor/temperature_log.h"

#include <QString>
#include <QVector>

/// How one drive fares.
struct DriveRating
{
    qint32 level = level::kFine;
    qint32 health = 100; ///< percent, the worst of the pre-failure attributes
    QString detail;      ///< a line for each thing that is wrong, each ended by a line feed
};

/// Rates a drive by its temperature, against the limits in `settings`, and by its pre-failure attributes.
[[nodiscard]] DriveRating rateDrive(const DeviceRecord &device, const Settings &settings);

/// What one evaluation of all drives found.
struct HealthReport
{
    qint32 alertLevel = level::kNotEvaluated; ///< the worst level of the drives that were evaluated
    QString alertText; ///< a block for each drive above level::kFine, without a line feed at its end
    QVector<TemperatureReading> temperatures; ///< to be logged, in list order
};

/// Rates every monitored drive whose last read gave attributes and stores level and health in its record;
/// the others keep theirs.
[[nodiscard]] HealthReport evaluateHealth(DeviceList &devices, const Settings &settings);

/// Carries the values of every drive that has attributes over into the fields kept for the previous read.
/// To be done before each update.
void keepPreviousValues(DeviceList &devices);
