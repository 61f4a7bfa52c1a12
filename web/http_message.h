// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QPair>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace web {

/// A request after its body has arrived. The bytes come from anyone.
struct HttpRequest
{
    QByteArray method;
    QByteArray target;                     ///< path and query as sent, not decoded
    QHash<QByteArray, QByteArray> headers; ///< names in lower case
    QByteArray body;
    QHostAddress peer;     ///< the client, as reported by a trusted proxy if there is one
    bool isSecure = false; ///< over TLS, here or up to a trusted proxy
};

struct HttpResponse
{
    int status = 200;
    QByteArray contentType = QByteArrayLiteral("application/json");
    QByteArray body;
    QVector<QPair<QByteArray, QByteArray>> headers; ///< beside the ones that every response carries

    void addHeader(const QByteArray &name, const QByteArray &value)
    {
        headers.append(qMakePair(name, value));
    }
};

/// Returns a response with the JSON object {"error": text}.
[[nodiscard]] HttpResponse errorResponse(int status, const QString &text);

/// The target of a request, decoded.
struct Target
{
    QStringList segments;          ///< of the path; "/" has none, and a final "/" adds none
    QHash<QString, QString> query; ///< of a repeated key the first value
};

/// Returns nullopt for a target that does not begin with "/", has a broken percent escape, text that is not
/// UTF-8, a control character, an empty segment within the path, or a segment "." or "..".
[[nodiscard]] std::optional<Target> parseTarget(const QByteArray &target);

/// Returns the value of the cookie `name`; empty if there is none.
[[nodiscard]] QByteArray cookieValue(const HttpRequest &request, const QByteArray &name);

} // namespace web
