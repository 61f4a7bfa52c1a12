// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/site.h"

#include "web/admission.h"
#include "web/page_files.h"
#include "web/routes.h"

#include <QJsonDocument>

namespace web {

namespace {

const QVector<Route> &allRoutes()
{
    static const QVector<Route> routes =
        sessionRoutes() + documentRoutes() + historyRoutes() + workRoutes() + metricsRoutes();
    return routes;
}

/// Returns the segments that stand for "*" if `segments` fit `pattern`.
std::optional<QStringList> match(const char *pattern, const QStringList &segments)
{
    const QStringList parts = QString::fromLatin1(pattern).split(QLatin1Char('/'));
    if (parts.size() != segments.size())
        return std::nullopt;
    QStringList captured;
    for (int i = 0; i < parts.size(); ++i) {
        if (parts.at(i) == QLatin1String("*"))
            captured.append(segments.at(i));
        else if (parts.at(i) != segments.at(i))
            return std::nullopt;
    }
    return captured;
}

/// Removes the base path from `segments`; false if they do not begin with it.
bool stripBasePath(QStringList &segments, const QString &basePath)
{
    for (const QString &part : basePath.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (segments.isEmpty() || segments.first() != part)
            return false;
        segments.removeFirst();
    }
    return true;
}

QByteArray methodOf(const HttpRequest &request)
{
    return request.method == "HEAD" ? QByteArrayLiteral("GET") : request.method;
}

/// Answers a path that has a route, or nullopt where it has none.
std::optional<Answer> callRoute(const HttpRequest &request, const Site &site, const Target &target)
{
    QByteArray allowed;
    for (const Route &route : allRoutes()) {
        const auto captured = match(route.path, target.segments);
        if (!captured)
            continue;
        if (methodOf(request) != route.method) {
            allowed += (allowed.isEmpty() ? "" : ", ") + QByteArray(route.method);
            continue;
        }
        Call call{request, site, *captured, target.query, identityOf(request, site)};
        if (auto refusal = refusalOf(request, site, route.access, call.identity))
            return *refusal;
        return route.handle(call);
    }
    if (allowed.isEmpty())
        return std::nullopt;
    HttpResponse response = errorResponse(405, QStringLiteral("this path does not take that method"));
    response.addHeader("Allow", allowed);
    return response;
}

} // namespace

QByteArray cookieName(const Site &site)
{
    return "halvex-web-" + QByteArray::number(site.port);
}

HttpResponse jsonResponse(const QJsonDocument &json)
{
    HttpResponse response;
    response.body = json.toJson(QJsonDocument::Compact) + '\n';
    return response;
}

Answer answer(const HttpRequest &request, const Site &site)
{
    if (auto refusal = foreignHost(request, site.configuration))
        return *refusal;
    auto target = parseTarget(request.target);
    if (!target)
        return errorResponse(400, QStringLiteral("the path or query is malformed"));
    if (!stripBasePath(target->segments, site.configuration.basePath))
        return errorResponse(404, QStringLiteral("there is nothing at this path"));
    if (auto response = callRoute(request, site, *target))
        return *std::move(response);
    return pageFile(request, target->segments);
}

} // namespace web
