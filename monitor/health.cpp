// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/health.h"

#include "monitor/logging.h"
#include "wire/attribute_limits.h"

#include <algorithm>

namespace {

using attribute_limits::kCriticalValue;

/// Vendors normalize from 253, from 200 or from 100 down; the scale is inferred from the value.
qint32 healthPercent(quint32 value)
{
    if (value > 200)
        return qint32(value / 253.0 * 100);
    if (value > 100)
        return qint32(value / 200.0 * 100);
    return qint32(value);
}

/// Adds a text for the warning limit alone: with a critical limit below it, a drive can be critical without a
/// text.
void rateTemperature(qint32 celsius, const Settings &settings, DriveRating &rating)
{
    if (celsius >= settings.wTemp) {
        rating.detail += temperatureLine(celsius);
        rating.level = level::kWarning;
    }
    if (celsius >= settings.cTemp)
        rating.level = level::kCritical;
}

void rateAttribute(const AttributeEntry &attribute, DriveRating &rating)
{
    const quint32 value = attribute.current;
    rating.health = std::min(rating.health, healthPercent(value));
    const qint32 level = attributeLevel(attribute);
    if (level == level::kFine)
        return;
    rating.level = std::max(rating.level, level);
    rating.detail += attributeLine(attribute.id, value);
}

QString traceLine(const DeviceRecord &device)
{
    const QString separator = QStringLiteral("]![");
    QString line = QStringLiteral("SMART") + separator + QString::number(device.deviceNumber) + separator +
                   device.serial + separator + QString::number(device.rating.level) + separator +
                   QString::number(device.rating.health) + separator;
    for (const AttributeEntry &attribute : device.smart.attributes)
        line += QStringLiteral("~;%1").arg(attribute.current);
    return line;
}

} // namespace

bool isEvaluated(const DeviceRecord &device)
{
    return device.smart.fullRead == FullRead::Attributes && device.monitored != 0;
}

qint32 attributeLevel(const AttributeEntry &attribute)
{
    if (!attribute_limits::isFailing(attribute.current, attribute.threshold))
        return level::kFine;
    return attribute.current <= kCriticalValue ? level::kCritical : level::kWarning;
}

QString temperatureLine(qint64 celsius)
{
    return QStringLiteral("   Temperature=%1 Celsius (%2 Fahrengeit)\n")
        .arg(celsius)
        .arg(celsius * 9 / 5 + 32);
}

QString attributeLine(quint32 id, qint64 value)
{
    return QStringLiteral("   Parameter ID %1=%2\n").arg(id).arg(value);
}

// Concatenated, because a model is the drive's own text and may contain a placeholder.
QString alertBlock(qint32 deviceNumber, const QString &model, const QString &detail)
{
    return QStringLiteral("ID: ") + QString::number(deviceNumber) + QLatin1Char(' ') + model +
           QLatin1Char('\n') + detail.chopped(std::min(detail.size(), 1)) + QLatin1Char('\n');
}

DriveRating rateDrive(const DeviceRecord &device, const Settings &settings)
{
    DriveRating rating;
    if (device.smart.hasTemperature)
        rateTemperature(device.smart.temperature, settings, rating);
    for (const AttributeEntry &attribute : device.smart.attributes) {
        if (attribute.notPrefailure == 0)
            rateAttribute(attribute, rating);
    }
    return rating;
}

HealthReport evaluateHealth(DeviceList &devices, const Settings &settings)
{
    HealthReport report;
    for (int i = 0; i < devices.size(); ++i) {
        DeviceRecord &device = devices[i];
        if (!isEvaluated(device))
            continue;
        const DriveRating rating = rateDrive(device, settings);
        device.rating = {rating.level, rating.health};
        report.alertLevel = std::max(report.alertLevel, rating.level);
        if (rating.level > level::kFine)
            report.alertText += alertBlock(device.deviceNumber, device.model, rating.detail);
        const bool isCurrent =
            device.smart.lastRead != LastRead::Failed && device.smart.lastRead != LastRead::Asleep;
        if (device.smart.hasTemperature && isCurrent)
            report.temperatures.append({i, device.smart.temperature});
        qCDebug(lcMonitor) << traceLine(device);
    }
    report.alertText.chop(1);
    return report;
}

void keepPreviousValues(DeviceList &devices)
{
    for (DeviceRecord &device : devices) {
        if (device.smart.fullRead == FullRead::Attributes) {
            device.smart.previousTemperature = device.smart.temperature;
            device.smart.previousAttributes = device.smart.attributes;
        }
    }
}
