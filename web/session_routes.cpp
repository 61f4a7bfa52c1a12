// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/passwords.h"
#include "web/routes.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QThreadPool>

namespace web {

namespace {

HttpResponse sessionDocument(const Site &site, const std::optional<Identity> &identity)
{
    QJsonObject object{{QStringLiteral("name"), QJsonValue()},
                       {QStringLiteral("role"), QJsonValue()},
                       {QStringLiteral("needsLogin"), site.configuration.needsLogin()}};
    if (identity) {
        const bool isOperator = identity->role == Role::Operator;
        object[QStringLiteral("name")] = identity->name;
        object[QStringLiteral("role")] = isOperator ? QStringLiteral("operator") : QStringLiteral("reader");
    }
    return jsonResponse(QJsonDocument(object));
}

void setCookie(HttpResponse &response, const Call &call, const QByteArray &token, Seconds lifetime)
{
    QByteArray cookie = cookieName(call.site) + '=' + token +
                        "; Path=" + call.site.configuration.basePath.toLatin1() +
                        "; Max-Age=" + QByteArray::number(lifetime) + "; HttpOnly; SameSite=Strict";
    if (call.request.isSecure)
        cookie += "; Secure";
    response.addHeader("Set-Cookie", cookie);
}

/// Returns the user whose name and password these are. Takes the same time for a name that does not exist.
std::optional<Identity> checkLogin(const Configuration &configuration, const QString &name,
                                   const QString &password)
{
    static const QByteArray kNobody = hashPassword(QString());
    const User *user = nullptr;
    for (const User &candidate : configuration.users) {
        if (candidate.name == name)
            user = &candidate;
    }
    const bool isRight = verifyPassword(password, user ? user->password : kNobody);
    if (!user || !isRight)
        return std::nullopt;
    return Identity{user->name, user->role};
}

HttpResponse finishLogin(const Call &call, const QString &name, const QString &password)
{
    const auto identity = checkLogin(call.site.configuration, name, password);
    if (!identity)
        return errorResponse(401, QStringLiteral("name or password is wrong"));
    call.site.loginLimit.succeeded(call.request.peer);
    const QByteArray previous = cookieValue(call.request, cookieName(call.site));
    const QByteArray token = call.site.sessions.start(*identity, previous, call.site.now.toSecsSinceEpoch());
    HttpResponse response = sessionDocument(call.site, identity);
    setCookie(response, call, token, Sessions::kLifetime);
    return response;
}

Answer logIn(const Call &call)
{
    if (!call.site.configuration.needsLogin())
        return errorResponse(403, QStringLiteral("no users are configured"));
    const QJsonObject body = QJsonDocument::fromJson(call.request.body).object();
    const QJsonValue name = body.value(QStringLiteral("name"));
    const QJsonValue password = body.value(QStringLiteral("password"));
    if (!name.isString() || !password.isString())
        return errorResponse(400, QStringLiteral("the body must be {\"name\": text, \"password\": text}"));
    if (!call.site.loginLimit.begin(call.request.peer, call.site.now.toSecsSinceEpoch())) {
        HttpResponse response = errorResponse(429, QStringLiteral("too many failed logins; wait a minute"));
        response.addHeader("Retry-After", QByteArray::number(LoginLimit::kWindow));
        return response;
    }
    // Hashing takes long: the server's threads have other connections to serve.
    return Deferred{[request = call.request, site = call.site, name = name.toString(),
                     password = password.toString()](const Reply &reply) {
        QThreadPool::globalInstance()->start([=] {
            reply(finishLogin(Call{request, site, {}, {}, {}}, name, password));
        });
    }};
}

Answer logOut(const Call &call)
{
    call.site.sessions.end(cookieValue(call.request, cookieName(call.site)));
    HttpResponse response = sessionDocument(call.site, std::nullopt);
    setCookie(response, call, {}, 0);
    return response;
}

Answer session(const Call &call)
{
    return sessionDocument(call.site, call.identity);
}

Answer healthy(const Call &)
{
    HttpResponse response;
    response.contentType = "text/plain; charset=utf-8";
    response.body = "ok\n";
    return response;
}

} // namespace

QVector<Route> sessionRoutes()
{
    return {
        {"GET", "-/healthy", Access::Anyone, healthy},
        {"GET", "api/v1/session", Access::Anyone, session},
        {"POST", "login", Access::Anyone, logIn},
        {"POST", "logout", Access::Anyone, logOut},
    };
}

} // namespace web
