// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/admission.h"

#include "web/passwords.h"

#include <QUrl>

#include <algorithm>

namespace web {

namespace {

/// Returns the host of "HOST[:PORT]" in lower case and without brackets; empty if it is malformed.
QString hostOf(const QByteArray &authority)
{
    const QUrl url(QStringLiteral("http://") + QString::fromLatin1(authority), QUrl::StrictMode);
    const bool isPlain = url.isValid() && url.userInfo().isEmpty() && url.path().isEmpty() &&
                         !url.hasQuery() && !url.hasFragment();
    return isPlain ? url.host(QUrl::FullyEncoded).toLower() : QString();
}

/// Returns whether the request was made by a page of another site. A client that is not a browser sends
/// neither header.
bool isForeign(const HttpRequest &request)
{
    const QByteArray site = request.headers.value("sec-fetch-site");
    if (!site.isEmpty() && site != "same-origin" && site != "none")
        return true;
    if (!request.headers.contains("origin"))
        return false;
    const QByteArray origin = request.headers.value("origin").toLower();
    const QByteArray host = request.headers.value("host").toLower();
    return origin != "http://" + host && origin != "https://" + host;
}

bool isChange(const HttpRequest &request)
{
    return request.method != "GET" && request.method != "HEAD";
}

bool isJson(const HttpRequest &request)
{
    const QByteArray type = request.headers.value("content-type").split(';').first();
    return type.trimmed().toLower() == "application/json";
}

HttpResponse loginNeeded()
{
    return errorResponse(401, QStringLiteral("this needs a login"));
}

std::optional<HttpResponse> metricsRefusal(const HttpRequest &request, const Configuration &configuration,
                                           bool hasLogin)
{
    const bool isProtected = configuration.needsLogin() || !configuration.metricsToken.isEmpty();
    if (!isProtected || hasLogin)
        return std::nullopt;
    const QByteArray authorization = request.headers.value("authorization");
    const QByteArray scheme = QByteArrayLiteral("bearer ");
    const bool hasToken =
        !configuration.metricsToken.isEmpty() && authorization.left(scheme.size()).toLower() == scheme &&
        isEqualSecret(authorization.mid(scheme.size()).trimmed(), configuration.metricsToken);
    if (hasToken)
        return std::nullopt;
    HttpResponse response = errorResponse(401, QStringLiteral("metrics need the token or a login"));
    response.addHeader("WWW-Authenticate", "Bearer");
    return response;
}

} // namespace

std::optional<HttpResponse> foreignHost(const HttpRequest &request, const Configuration &configuration)
{
    if (!request.headers.contains("host"))
        return errorResponse(400, QStringLiteral("the request has no Host"));
    const QString host = hostOf(request.headers.value("host"));
    const bool isAddress = !QHostAddress(host).isNull();
    if (!host.isEmpty() &&
        (isAddress || host == QLatin1String("localhost") || configuration.hosts.contains(host)))
        return std::nullopt;
    return errorResponse(403,
                         QStringLiteral("this host name is not one of this server; \"hosts\" lists them"));
}

std::optional<Identity> identityOf(const HttpRequest &request, const Site &site)
{
    return site.sessions.find(cookieValue(request, cookieName(site)), site.now.toSecsSinceEpoch());
}

std::optional<HttpResponse> refusalOf(const HttpRequest &request, const Site &site, Access access,
                                      const std::optional<Identity> &identity)
{
    const bool needsLogin = site.configuration.needsLogin();
    if (isChange(request) && isForeign(request))
        return errorResponse(403, QStringLiteral("a page of another site may not change anything"));
    if (access == Access::Metrics)
        return metricsRefusal(request, site.configuration, identity.has_value());
    if (access == Access::Reader && needsLogin && !identity)
        return loginNeeded();
    if (access == Access::Operator && !needsLogin)
        return errorResponse(403, QStringLiteral("nobody may change anything: no users are configured"));
    if (access == Access::Operator && !identity)
        return loginNeeded();
    if (access == Access::Operator && identity->role != Role::Operator)
        return errorResponse(403, QStringLiteral("this needs the role \"operator\""));
    if (isChange(request) && !isJson(request))
        return errorResponse(415, QStringLiteral("a change needs Content-Type: application/json"));
    return std::nullopt;
}

QHostAddress clientAddress(const QHostAddress &peer, const QByteArray &forwardedFor,
                           const QVector<QHostAddress> &trustedProxies)
{
    QHostAddress client = peer;
    const QList<QByteArray> hops = forwardedFor.split(',');
    for (auto hop = hops.crbegin(); hop != hops.crend() && trustedProxies.contains(client); ++hop) {
        const QHostAddress address(QString::fromLatin1(hop->trimmed()));
        if (address.isNull())
            break;
        client = address;
    }
    return client;
}

} // namespace web
