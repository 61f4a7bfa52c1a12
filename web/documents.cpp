// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/documents.h"

#include "client/columns.h"

#include <QJsonArray>

#include <cmath>

namespace web {

namespace {

QString stateWord(ServiceState state)
{
    switch (state) {
    case ServiceState::Ready:
        return QStringLiteral("ready");
    case ServiceState::Detecting:
        return QStringLiteral("detecting");
    case ServiceState::Paused:
        return QStringLiteral("paused");
    case ServiceState::Unreachable:
        break;
    }
    return QStringLiteral("unreachable");
}

QJsonArray hourlyArray(const HourlyMeans &means)
{
    QJsonArray array;
    for (const std::optional<double> &mean : means)
        array.append(mean ? QJsonValue(std::round(*mean * 10) / 10) : QJsonValue());
    return array;
}

} // namespace

QJsonValue levelValue(int level)
{
    static const QStringList kWords{QStringLiteral("fine"), QStringLiteral("warning"),
                                    QStringLiteral("critical")};
    return level >= 1 && level <= kWords.size() ? QJsonValue(kWords.at(level - 1)) : QJsonValue();
}

QJsonValue timeValue(const QDateTime &time)
{
    return time.isValid() ? QJsonValue(time.toUTC().toString(Qt::ISODate)) : QJsonValue();
}

QJsonValue timeValue(qint64 secondsSinceEpoch)
{
    return timeValue(QDateTime::fromSecsSinceEpoch(secondsSinceEpoch, Qt::UTC));
}

QJsonObject serviceDocument(const ServiceSnapshot &service)
{
    QJsonObject object{
        {QStringLiteral("name"), service.name},
        {QStringLiteral("host"), service.host},
        {QStringLiteral("port"), service.port},
        {QStringLiteral("state"), stateWord(service.state)},
        {QStringLiteral("version"), QJsonValue()},
        {QStringLiteral("hostName"), QJsonValue()},
        {QStringLiteral("level"), QJsonValue()},
        {QStringLiteral("drives"), QJsonValue()},
        {QStringLiteral("lastAnswer"), timeValue(service.lastAnswer)},
        {QStringLiteral("error"), service.error.isEmpty() ? QJsonValue() : QJsonValue(service.error)},
    };
    if (service.data) {
        object[QStringLiteral("version")] = service.data->greeting.version;
        object[QStringLiteral("hostName")] = service.data->greeting.hostName;
        object[QStringLiteral("level")] = levelValue(int(service.data->greeting.level));
        object[QStringLiteral("drives")] = service.data->drives.size();
    }
    return object;
}

QJsonObject overviewDocument(const ServiceSnapshot &service)
{
    QJsonObject object = serviceDocument(service);
    QJsonArray drives;
    for (int i = 0; service.data && i < service.data->drives.size(); ++i) {
        QJsonObject drive = client::toObject(client::driveColumns(), service.data->drives.at(i));
        drive.insert(QStringLiteral("temperatures"), hourlyArray(service.data->temperatures.at(i)));
        drives.append(drive);
    }
    object.insert(QStringLiteral("driveList"), drives);
    return object;
}

QJsonObject eventDocument(const Event &event)
{
    const bool hasDrive = event.drive >= 0;
    const auto orNull = [hasDrive](const QJsonValue &value) { return hasDrive ? value : QJsonValue(); };
    return {
        {QStringLiteral("time"), timeValue(event.time)},
        {QStringLiteral("service"), event.service},
        {QStringLiteral("drive"), orNull(event.drive)},
        {QStringLiteral("model"), orNull(event.model)},
        {QStringLiteral("serial"), orNull(event.serial)},
        {QStringLiteral("kind"), eventWord(event.kind)},
        {QStringLiteral("text"), event.text},
    };
}

QJsonObject formerDriveDocument(const KnownDrive &drive)
{
    const auto orNull = [](const std::optional<int> &value) {
        return value ? QJsonValue(*value) : QJsonValue();
    };
    return {
        {QStringLiteral("service"), drive.key.service},
        {QStringLiteral("model"), drive.key.model},
        {QStringLiteral("serial"), drive.key.serial},
        {QStringLiteral("firstSeen"), timeValue(drive.firstSeen)},
        {QStringLiteral("lastSeen"), timeValue(drive.lastSeen)},
        {QStringLiteral("level"), levelValue(drive.level.value_or(0))},
        {QStringLiteral("healthPercent"), orNull(drive.healthPercent)},
        {QStringLiteral("temperatureCelsius"), orNull(drive.temperatureCelsius)},
    };
}

} // namespace web
