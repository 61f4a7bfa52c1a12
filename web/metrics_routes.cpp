// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/host.h"
#include "web/metrics/families.h"
#include "web/routes.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace web {

namespace {

using metrics::Family;

Answer metricsAnswer(const Call &call, QVector<Family> families)
{
    const metrics::Format format = metrics::formatFor(call.request.headers.value("accept"));
    return ChunkedText{metrics::contentType(format), metrics::textSource(std::move(families), format)};
}

Answer allMetrics(const Call &call)
{
    const metrics::Services &services = call.site.snapshot->services;
    QVector<Family> families =
        metrics::processFamilies(call.site.version, host::processFigures()) + metrics::pollFamilies(services);
    if (services.size() == 1)
        families += metrics::driveFamilies(services.first());
    return metricsAnswer(call, families);
}

Answer probe(const Call &call)
{
    const QString target = call.query.value(QStringLiteral("target"));
    if (target.isEmpty())
        return errorResponse(400, QStringLiteral("\"target\" is missing: the name of a service"));
    for (const auto &service : call.site.snapshot->services) {
        if (service->name == target)
            return metricsAnswer(call, metrics::pollFamilies({service}) + metrics::driveFamilies(service));
    }
    return errorResponse(404, QStringLiteral("there is no such service"));
}

/// Returns the address that the client reached this server by, with its port.
QString ownAddress(const Call &call)
{
    const QString authority = QString::fromLatin1(call.request.headers.value("host"));
    const int bracket = int(authority.lastIndexOf(QLatin1Char(']')));
    const bool hasPort = authority.indexOf(QLatin1Char(':'), bracket + 1) >= 0;
    const QString defaultPort = call.request.isSecure ? QStringLiteral(":443") : QStringLiteral(":80");
    return hasPort ? authority : authority + defaultPort;
}

Answer targets(const Call &call)
{
    QJsonArray array;
    for (const auto &service : call.site.snapshot->services) {
        const QJsonObject labels{
            {QStringLiteral("__metrics_path__"), call.site.configuration.basePath + QStringLiteral("probe")},
            {QStringLiteral("__param_target"), service->name},
            {QStringLiteral("instance"), service->name}};
        array.append(QJsonObject{{QStringLiteral("targets"), QJsonArray{ownAddress(call)}},
                                 {QStringLiteral("labels"), labels}});
    }
    return jsonResponse(QJsonDocument(array));
}

} // namespace

QVector<Route> metricsRoutes()
{
    return {
        {"GET", "metrics", Access::Metrics, allMetrics},
        {"GET", "probe", Access::Metrics, probe},
        {"GET", "targets", Access::Metrics, targets},
    };
}

} // namespace web
