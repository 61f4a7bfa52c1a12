// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/documents.h"

#include "client/columns.h"
#include "client/settings_table.h"
#include "client/units.h"

namespace client::documents {

QJsonObject service(const Greeting &greeting, const QTimeZone &zone)
{
    return {
        {QStringLiteral("version"), greeting.version},
        {QStringLiteral("hostName"), greeting.hostName},
        {QStringLiteral("port"), qint64(greeting.settings.port)},
        {QStringLiteral("time"), isoTime(greeting.time.toTimeZone(zone))},
        {QStringLiteral("level"), levelValue(greeting.level)},
    };
}

QJsonObject status(const Greeting &greeting, const QVector<Drive> &drives, const QTimeZone &zone)
{
    return {{QStringLiteral("service"), service(greeting, zone)},
            {QStringLiteral("drives"), toArray(driveColumns(), drives)}};
}

QJsonObject info(const Drive &drive, const QVector<Volume> &volumes)
{
    QJsonObject object = toObject(driveColumns(), drive);
    object.insert(QStringLiteral("volumes"), toArray(volumeColumns(), volumes));
    return object;
}

QJsonObject smart(const Drive &drive, const QVector<Attribute> &attributes)
{
    QJsonObject object = toObject(driveColumns(), drive);
    object.insert(QStringLiteral("attributes"), toArray(attributeColumns(), attributes));
    return object;
}

QJsonObject temperatures(qint32 drive, const QVector<TemperatureRecord> &records, const QTimeZone &zone)
{
    return {{QStringLiteral("drive"), drive},
            {QStringLiteral("records"), toArray(temperatureColumns(zone), records)}};
}

QJsonObject settings(const ServiceSettings &settings)
{
    QJsonObject object;
    for (const Setting &setting : settingsTable())
        object.insert(setting.key, setting.json(settings));
    return object;
}

} // namespace client::documents
