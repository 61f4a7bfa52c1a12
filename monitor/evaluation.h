// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "monitor/finding.h"

/// The result of polling one drive.
enum class ReadOutcome {
    NotPolled, ///< the evaluation follows a change of settings, not a poll
    Succeeded,
    Failed,
    Asleep, ///< left in standby
};

/// One drive as an evaluation saw it.
struct DriveEvaluation
{
    QString model;
    QString serial;
    qint32 deviceNumber = -1;
    ReadOutcome read = ReadOutcome::NotPolled;
    bool isEvaluated = false; ///< it has values; the rest is meaningful only then
    Severity level = Severity::Fine;
    qint32 healthPercent = 100;
    std::optional<qint32> temperatureCelsius;
    QVector<AttributeEntry> attributes;
};

/// One evaluation of all drives, in list order.
struct Evaluation
{
    bool isListComplete = true; ///< false while a detection runs: a drive that is missing may still come
    QVector<DriveEvaluation> drives;
};

/// Temperature limits in degrees Celsius, and the options of the policy.
struct AlertRules
{
    qint32 warningCelsius = 55;
    qint32 criticalCelsius = 65;
    QVector<quint32> growthIds;
};

/// Describes the listed drives after an evaluation. Without a poll no drive counts as read.
[[nodiscard]] Evaluation evaluationOf(const DeviceList &devices, bool isPoll, bool isListComplete);
