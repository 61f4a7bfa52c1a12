// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/health.h"

#include "monitor/monitor_log.h"

#include <algorithm>

namespace {

/// Normalized values at or below these alarm whatever the drive's own threshold is.
constexpr quint32 kWarningValue = 10;
constexpr quint32 kCriticalValue = 5;

bool isEvaluated(const DeviceRecord &device)
{
    return device.smartState > 0 && device.monitored != 0;
}

/// Vendors normalize from 253, from 200 or from 100 down; which scale an attribute has, its value tells.
qint32 healthPercent(quint32 value)
{
    if (value > 200)
        return qint32(value / 253.0 * 100);
    if (value > 100)
        return qint32(value / 200.0 * 100);
    return qint32(value);
}

/// The text of the warning limit alone: with a critical limit below it a drive can be critical without one.
void rateTemperature(qint32 celsius, const Settings &settings, DriveRating &rating)
{
    if (celsius >= settings.wTemp) {
        rating.detail += QStringLiteral("   Temperature=%1 Celsius (%2 Fahrengeit)\n")
                             .arg(celsius)
                             .arg(qint64{celsius} * 9 / 5 + 32);
        rating.level = level::kWarning;
    }
    if (celsius >= settings.cTemp)
        rating.level = level::kCritical;
}

void rateAttribute(const AttributeEntry &attribute, DriveRating &rating)
{
    const quint32 value = attribute.current;
    rating.health = std::min(rating.health, healthPercent(value));
    if (value > attribute.threshold && value > kWarningValue)
        return;
    rating.level = std::max(rating.level, value <= kCriticalValue ? level::kCritical : level::kWarning);
    rating.detail += QStringLiteral("   Parameter ID %1=%2\n").arg(attribute.id).arg(value);
}

/// Put together without placeholders, because a model is the drive's own text and may hold one. Without any
/// detail an empty line stands in its place.
QString alertBlock(const DeviceRecord &device, const DriveRating &rating)
{
    return QStringLiteral("ID: ") + QString::number(device.deviceNumber) + QLatin1Char(' ') + device.model +
           QLatin1Char('\n') + rating.detail.chopped(std::min(rating.detail.size(), 1)) + QLatin1Char('\n');
}

QString traceLine(const DeviceRecord &device)
{
    const QString separator = QStringLiteral("]![");
    QString line = QStringLiteral("SMART") + separator + QString::number(device.deviceNumber) + separator +
                   device.serial + separator + QString::number(device.statusLevel) + separator +
                   QString::number(device.health) + separator;
    for (const AttributeEntry &attribute : device.attributes)
        line += QStringLiteral("~;%1").arg(attribute.current);
    return line;
}

} // namespace

DriveRating rateDrive(const DeviceRecord &device, const Settings &settings)
{
    DriveRating rating;
    if (device.hasTemperature)
        rateTemperature(device.temperature, settings, rating);
    for (const AttributeEntry &attribute : device.attributes) {
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
        device.statusLevel = rating.level;
        device.health = rating.health;
        report.alertLevel = std::max(report.alertLevel, rating.level);
        if (rating.level > level::kFine)
            report.alertText += alertBlock(device, rating);
        if (device.hasTemperature)
            report.temperatures.append({i, device.temperature});
        qCDebug(lcMonitor) << traceLine(device);
    }
    report.alertText.chop(1);
    return report;
}

void keepPreviousValues(DeviceList &devices)
{
    for (DeviceRecord &device : devices) {
        if (device.smartState > 0) {
            device.previousTemperature = device.temperature;
            device.attributesPending = device.attributes;
        }
    }
}
