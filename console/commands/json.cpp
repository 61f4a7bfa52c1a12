// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/json.h"

#include "console/render/level.h"
#include "console/render/units.h"

namespace json {

QJsonValue number(quint64 value)
{
    constexpr quint64 kLargestExact = quint64(1) << 53; // a JSON reader may hold numbers as doubles
    if (value > kLargestExact)
        return QString::number(value);
    return double(value);
}

QJsonObject drive(qint32 number, const client::Drive &drive)
{
    const bool isRated = drive.isRated();
    QJsonObject object{
        {QStringLiteral("number"), number},
        {QStringLiteral("model"), drive.model},
        {QStringLiteral("serial"), drive.serial},
        {QStringLiteral("firmware"), drive.firmware},
        {QStringLiteral("capacityBytes"), json::number(drive.capacity)},
        {QStringLiteral("bytesPerSector"), double(drive.bytesPerSector)},
        {QStringLiteral("ataMajor"), drive.ataMajor},
        {QStringLiteral("ataVersion"), drive.ataVersion},
        {QStringLiteral("smartState"), drive.smartState},
        {QStringLiteral("attributeCount"), drive.attributeCount},
        {QStringLiteral("volumeCount"), drive.volumeCount},
        {QStringLiteral("monitored"), drive.monitored != 0},
        {QStringLiteral("powerOnRaw"), double(drive.powerOnRaw)},
    };
    object.insert(QStringLiteral("level"),
                  isRated ? QJsonValue(render::levelText(drive.statusLevel)) : QJsonValue());
    object.insert(QStringLiteral("healthPercent"), isRated ? QJsonValue(drive.health) : QJsonValue());
    object.insert(QStringLiteral("temperatureCelsius"),
                  drive.hasTemperature ? QJsonValue(drive.temperature) : QJsonValue());
    return object;
}

QJsonArray drives(const QVector<client::Drive> &drives)
{
    QJsonArray array;
    for (int i = 0; i < drives.size(); ++i)
        array.append(drive(i, drives.at(i)));
    return array;
}

QJsonArray volumes(const QVector<client::Volume> &volumes)
{
    QJsonArray array;
    for (const client::Volume &volume : volumes) {
        array.append(QJsonObject{
            {QStringLiteral("drive"), volume.drive},
            {QStringLiteral("volume"), volume.root},
            {QStringLiteral("label"), volume.label},
            {QStringLiteral("fileSystem"), volume.fileSystem},
            {QStringLiteral("serial"), volume.serial},
            {QStringLiteral("totalBytes"), number(volume.totalBytes)},
            {QStringLiteral("freeBytes"), number(volume.freeBytes)},
        });
    }
    return array;
}

QJsonObject service(const client::Greeting &greeting)
{
    return {
        {QStringLiteral("version"), greeting.version},
        {QStringLiteral("hostName"), greeting.hostName},
        {QStringLiteral("port"), greeting.settings.port},
        {QStringLiteral("time"), render::isoTime(greeting.time)},
        {QStringLiteral("level"),
         greeting.alertLevel > 0 ? QJsonValue(render::levelText(greeting.alertLevel)) : QJsonValue()},
    };
}

} // namespace json
