// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/site.h"

#include <QStringList>

namespace web {

/// The login that a request requires.
enum class Access {
    Anyone,
    Reader,   ///< a login, where users are configured
    Operator, ///< the login of an operator; nobody where no users are configured
    Metrics,  ///< the metrics token or a login, where either is configured
};

/// A request that was admitted, with its path taken apart.
struct Call
{
    const HttpRequest &request;
    const Site &site;
    QStringList captured; ///< the segments that stand for "*" in the route
    QHash<QString, QString> query;
    std::optional<Identity> identity; ///< nullopt: no login
};

struct Route
{
    const char *method;
    const char *path; ///< segments below the base path; "*" stands for any one
    Access access;
    Answer (*handle)(const Call &call);
};

/// Return the routes of one subject each; defined in the file of its handlers.
[[nodiscard]] QVector<Route> sessionRoutes();
[[nodiscard]] QVector<Route> documentRoutes();
[[nodiscard]] QVector<Route> historyRoutes();
[[nodiscard]] QVector<Route> workRoutes();
[[nodiscard]] QVector<Route> metricsRoutes();

/// Returns a response with `json`.
[[nodiscard]] HttpResponse jsonResponse(const QJsonDocument &json);

/// Returns the service that the first captured segment names; null if there is none.
[[nodiscard]] const ServiceSnapshot *serviceOf(const Call &call);

/// Returns the refusal of a request about a service that does not exist or has never answered.
[[nodiscard]] std::optional<HttpResponse> missingData(const ServiceSnapshot *service);

/// Returns the drive number in the second captured segment; nullopt if the service has no such drive.
[[nodiscard]] std::optional<qint32> driveNumber(const Call &call);
[[nodiscard]] HttpResponse noSuchDrive();

} // namespace web
