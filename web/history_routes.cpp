// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/numbers.h"
#include "web/documents.h"
#include "web/routes.h"
#include "web/temperature_series.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>

namespace web {

namespace {

constexpr qint64 kDay = qint64{24} * 3600;
constexpr int kDefaultPoints = 500;
constexpr int kMostPoints = 10000;
constexpr int kDefaultEvents = 200;
constexpr int kMostEvents = 10000;

/// The period that a query asks for, in seconds since 1970: the last day by default.
struct Period
{
    qint64 from = 0;
    qint64 to = 0;
};

std::optional<qint64> parseTime(QString text)
{
    // A "+" that was not escaped arrives as a blank.
    const QDateTime time =
        QDateTime::fromString(text.replace(QLatin1Char(' '), QLatin1Char('+')), Qt::ISODate);
    const bool hasZone = time.timeSpec() == Qt::UTC || time.timeSpec() == Qt::OffsetFromUTC;
    return time.isValid() && hasZone ? std::optional<qint64>(time.toSecsSinceEpoch()) : std::nullopt;
}

std::optional<Period> periodOf(const Call &call, qint64 defaultLength)
{
    const qint64 now = call.site.now.toSecsSinceEpoch();
    const QString from = call.query.value(QStringLiteral("from"));
    const QString to = call.query.value(QStringLiteral("to"));
    const auto begin = from.isEmpty() ? std::optional<qint64>(now - defaultLength) : parseTime(from);
    const auto end = to.isEmpty() ? std::optional<qint64>(now) : parseTime(to);
    return begin && end ? std::optional<Period>(Period{*begin, *end}) : std::nullopt;
}

HttpResponse badPeriod()
{
    return errorResponse(400,
                         QStringLiteral("\"from\" and \"to\" are times in ISO 8601 with Z or an offset"));
}

/// Returns the number `key` of the query; `absent` without one, nullopt if it is out of range.
std::optional<int> numberOf(const Call &call, const QString &key, int absent, int highest)
{
    const QString text = call.query.value(key);
    if (text.isEmpty())
        return absent;
    const auto number = client::strictNumber<qint32>(text);
    return number && *number >= 1 && *number <= highest ? std::optional<int>(*number) : std::nullopt;
}

Answer eventsOf(const Call &call, const QString &service)
{
    const auto period = periodOf(call, kDay);
    const auto limit = numberOf(call, QStringLiteral("limit"), kDefaultEvents, kMostEvents);
    if (!period)
        return badPeriod();
    if (!limit)
        return errorResponse(400, QStringLiteral("\"limit\" is a number from 1 to %1").arg(kMostEvents));
    QJsonArray array;
    for (const Event &event : call.site.history.events(service, period->from, period->to, *limit))
        array.append(eventDocument(event));
    return jsonResponse(QJsonDocument(array));
}

Answer allEvents(const Call &call)
{
    return eventsOf(call, {});
}

Answer serviceEvents(const Call &call)
{
    if (!serviceOf(call))
        return errorResponse(404, QStringLiteral("there is no such service"));
    return eventsOf(call, call.captured.at(0));
}

Answer formerDrives(const Call &call)
{
    QJsonArray array;
    for (const KnownDrive &drive : call.site.history.formerDrives())
        array.append(formerDriveDocument(drive));
    return jsonResponse(QJsonDocument(array));
}

Answer attributeChanges(const Call &call)
{
    const ServiceSnapshot *service = serviceOf(call);
    const auto number = driveNumber(call);
    const auto id = client::strictNumber<quint8>(call.captured.at(2));
    const auto period = periodOf(call, kDay);
    if (auto refusal = missingData(service))
        return *refusal;
    if (!number || !id)
        return noSuchDrive();
    if (!period)
        return badPeriod();
    const DriveKey key = driveKeys(service->name, service->data->drives).at(*number);
    QJsonArray changes;
    for (const StoredChange &change :
         call.site.history.attributeChanges(key, *id, period->from, period->to)) {
        changes.append(QJsonObject{{QStringLiteral("time"), timeValue(change.time)},
                                   {QStringLiteral("value"), double(change.value.value)},
                                   {QStringLiteral("worst"), double(change.value.worst)},
                                   {QStringLiteral("raw"), double(change.value.raw)}});
    }
    return jsonResponse(QJsonDocument(QJsonObject{{QStringLiteral("changes"), changes}}));
}

/// Returns `time` within the years that a request can name.
QDateTime recordable(const QDateTime &time)
{
    const QDateTime first(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC);
    const QDateTime last(QDate(2099, 12, 31), QTime(23, 59, 59), Qt::UTC);
    return std::clamp(time, first, last);
}

HttpResponse csvResponse(const QByteArray &csv)
{
    HttpResponse response;
    response.contentType = "text/csv; charset=utf-8";
    response.body = csv;
    return response;
}

Answer temperatures(const Call &call)
{
    const ServiceSnapshot *service = serviceOf(call);
    const auto number = driveNumber(call);
    const auto period = periodOf(call, kDay);
    const auto points = numberOf(call, QStringLiteral("points"), kDefaultPoints, kMostPoints);
    const QString format = call.query.value(QStringLiteral("format"), QStringLiteral("json"));
    if (auto refusal = missingData(service))
        return *refusal;
    if (!number)
        return noSuchDrive();
    if (!period)
        return badPeriod();
    if (!points)
        return errorResponse(400, QStringLiteral("\"points\" is a number from 1 to %1").arg(kMostPoints));
    if (format != QLatin1String("json") && format != QLatin1String("csv"))
        return errorResponse(400, QStringLiteral("\"format\" is \"json\" or \"csv\""));

    const ServiceClock clock(service->data->zone);
    const TemperatureQuery query{*number, period->from, period->to, *points};
    const bool isCsv = format == QLatin1String("csv");
    const auto respond = [clock, query, isCsv](const client::TemperatureHistory &history) {
        return isCsv ? csvResponse(temperatureCsv(history, query, clock))
                     : jsonResponse(QJsonDocument(temperatureSeries(history, query, clock)));
    };
    const work::ReadTemperatures work{recordable(clock.localTime(period->from)),
                                      recordable(clock.localTime(period->to)), respond};
    return Deferred{[&gateway = call.site.gateway, name = service->name, work](const Reply &reply) {
        gateway.start(name, work, reply);
    }};
}

} // namespace

QVector<Route> historyRoutes()
{
    return {
        {"GET", "api/v1/events", Access::Reader, allEvents},
        {"GET", "api/v1/former", Access::Reader, formerDrives},
        {"GET", "api/v1/services/*/events", Access::Reader, serviceEvents},
        {"GET", "api/v1/services/*/drives/*/temperatures", Access::Reader, temperatures},
        {"GET", "api/v1/services/*/drives/*/attributes/*", Access::Reader, attributeChanges},
    };
}

} // namespace web
