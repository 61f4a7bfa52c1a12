// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "disk/device_record.h"
#include "monitor/temperature_log.h"

#include <QString>
#include <QVector>

/// The rating of one drive.
struct DriveRating
{
    qint32 level = level::kFine;
    qint32 health = 100; ///< percent, the worst of the pre-failure attributes
    QString detail;      ///< a line for each fault, each ended by a line feed
};

/// Rates a drive by its temperature, against the limits in `settings`, and by its pre-failure attributes.
[[nodiscard]] DriveRating rateDrive(const DeviceRecord &device, const Settings &settings);

/// Returns whether an evaluation rates the drive: it is monitored and its last read gave attributes.
[[nodiscard]] bool isEvaluated(const DeviceRecord &device);

/// Rates the value of a pre-failure attribute.
[[nodiscard]] qint32 attributeLevel(const AttributeEntry &attribute);

// The parts of the alert text. Lines end with a line feed.
[[nodiscard]] QString temperatureLine(qint64 celsius);
[[nodiscard]] QString attributeLine(quint32 id, qint64 value);
/// `detail` holds the lines of the drive; without any the block has an empty line instead.
[[nodiscard]] QString alertBlock(qint32 deviceNumber, const QString &model, const QString &detail);

/// The result of one evaluation of all drives.
struct HealthReport
{
    qint32 alertLevel = level::kNotEvaluated; ///< the worst level of the drives that were evaluated
    QString alertText; ///< a block for each drive above level::kFine, without a line feed at its end
    QVector<TemperatureReading> temperatures; ///< to be logged, in list order
};

/// Rates every monitored drive whose last read returned attributes and stores level and health in its record.
/// The records of other drives are unchanged.
[[nodiscard]] HealthReport evaluateHealth(DeviceList &devices, const Settings &settings);

/// Copies the values of every drive with attributes to the fields for the previous read. Must be called
/// before each update.
void keepPreviousValues(DeviceList &devices);
