// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/evaluation.h"

#include "monitor/health.h"

namespace {

ReadOutcome outcomeOf(LastRead read)
{
    switch (read) {
    case LastRead::None:
        break;
    case LastRead::Answered:
        return ReadOutcome::Succeeded;
    case LastRead::Failed:
        return ReadOutcome::Failed;
    case LastRead::Asleep:
        return ReadOutcome::Asleep;
    }
    return ReadOutcome::NotPolled;
}

DriveEvaluation evaluationOf(const DeviceRecord &device, bool isPoll)
{
    DriveEvaluation drive;
    drive.model = device.model;
    drive.serial = device.serial;
    drive.deviceNumber = device.deviceNumber;
    drive.read = isPoll ? outcomeOf(device.smart.lastRead) : ReadOutcome::NotPolled;
    drive.isEvaluated = isEvaluated(device);
    drive.level = Severity(device.rating.level);
    drive.healthPercent = device.rating.health;
    if (device.smart.hasTemperature)
        drive.temperatureCelsius = device.smart.temperature;
    drive.attributes = device.smart.attributes;
    return drive;
}

} // namespace

Evaluation evaluationOf(const DeviceList &devices, bool isPoll, bool isListComplete)
{
    Evaluation evaluation;
    evaluation.isListComplete = isListComplete;
    for (const DeviceRecord &device : devices)
        evaluation.drives << evaluationOf(device, isPoll);
    return evaluation;
}
