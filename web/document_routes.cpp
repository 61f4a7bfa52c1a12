// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"
#include "client/documents.h"
#include "client/numbers.h"
#include "web/documents.h"
#include "web/routes.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace web {

namespace {

Answer services(const Call &call)
{
    QJsonArray array;
    for (const auto &service : call.site.snapshot->services)
        array.append(serviceDocument(*service));
    return jsonResponse(QJsonDocument(array));
}

Answer overview(const Call &call)
{
    QJsonArray array;
    for (const auto &service : call.site.snapshot->services)
        array.append(overviewDocument(*service));
    return jsonResponse(QJsonDocument(array));
}

/// Answers with the document that `make` returns for the service of the path, as it was at its last answer.
template <typename Make>
Answer documentOf(const Call &call, Make make)
{
    const ServiceSnapshot *service = serviceOf(call);
    if (auto refusal = missingData(service))
        return *refusal;
    HttpResponse response = jsonResponse(make(*service->data));
    response.addHeader("Halvex-Last-Answer", timeValue(service->lastAnswer).toString().toLatin1());
    if (service->isStale())
        response.addHeader("Halvex-Stale", "1");
    return response;
}

Answer status(const Call &call)
{
    return documentOf(call, [](const ServiceData &data) {
        return QJsonDocument(client::documents::status(data.greeting, data.drives, data.zone));
    });
}

Answer volumes(const Call &call)
{
    return documentOf(call, [](const ServiceData &data) {
        return QJsonDocument(client::toArray(client::volumeColumns(), data.volumes));
    });
}

Answer scans(const Call &call)
{
    return documentOf(call, [](const ServiceData &data) {
        return QJsonDocument(client::toArray(client::scanColumns(data.zone), data.scans));
    });
}

Answer schedule(const Call &call)
{
    return documentOf(call, [](const ServiceData &data) {
        return QJsonDocument(client::toArray(client::scheduleColumns(), data.schedule));
    });
}

Answer settings(const Call &call)
{
    return documentOf(call, [](const ServiceData &data) {
        return QJsonDocument(client::documents::settings(data.greeting.settings));
    });
}

Answer alerts(const Call &call)
{
    return documentOf(call, [](const ServiceData &data) {
        return QJsonDocument(data.alerts.value_or(QJsonObject{{QStringLiteral("supported"), false}}));
    });
}

Answer drive(const Call &call)
{
    const auto number = driveNumber(call);
    if (!number)
        return noSuchDrive();
    return documentOf(call, [&number](const ServiceData &data) {
        return QJsonDocument(client::documents::smart(data.drives.at(*number), data.attributes.at(*number)));
    });
}

Answer stream(const Call &call)
{
    const bool needsLogin = call.site.configuration.needsLogin();
    const QByteArray token = cookieValue(call.request, cookieName(call.site));
    return EventStream{[needsLogin, token, &sessions = call.site.sessions] {
        return !needsLogin || sessions.find(token, QDateTime::currentSecsSinceEpoch()).has_value();
    }};
}

} // namespace

const ServiceSnapshot *serviceOf(const Call &call)
{
    return call.site.snapshot->find(call.captured.value(0));
}

std::optional<HttpResponse> missingData(const ServiceSnapshot *service)
{
    if (!service)
        return errorResponse(404, QStringLiteral("there is no such service"));
    if (!service->data)
        return errorResponse(504, QStringLiteral("the service has not answered yet: %1").arg(service->error));
    return std::nullopt;
}

std::optional<qint32> driveNumber(const Call &call)
{
    const ServiceSnapshot *service = serviceOf(call);
    const auto number = client::strictNumber<qint32>(call.captured.value(1));
    if (!number || *number < 0)
        return std::nullopt;
    // Without data the service is the reason, which missingData() reports.
    const bool isListed = !service || !service->data || *number < service->data->drives.size();
    return isListed ? number : std::nullopt;
}

HttpResponse noSuchDrive()
{
    return errorResponse(404, QStringLiteral("the service has no such drive"));
}

QVector<Route> documentRoutes()
{
    return {
        {"GET", "api/v1/services", Access::Reader, services},
        {"GET", "api/v1/overview", Access::Reader, overview},
        {"GET", "api/v1/stream", Access::Reader, stream},
        {"GET", "api/v1/services/*/status", Access::Reader, status},
        {"GET", "api/v1/services/*/volumes", Access::Reader, volumes},
        {"GET", "api/v1/services/*/scans", Access::Reader, scans},
        {"GET", "api/v1/services/*/schedule", Access::Reader, schedule},
        {"GET", "api/v1/services/*/settings", Access::Reader, settings},
        {"GET", "api/v1/services/*/alerts", Access::Reader, alerts},
        {"GET", "api/v1/services/*/drives/*", Access::Reader, drive},
    };
}

} // namespace web
