// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/routes.h"

#include <optional>

/// The checks that every request passes before its handler, as functions over values.
namespace web {

/// Returns the refusal of a request whose Host names neither an address nor a name of this server: a page of
/// another site may have made its own name resolve to this address.
[[nodiscard]] std::optional<HttpResponse> foreignHost(const HttpRequest &request,
                                                      const Configuration &configuration);

/// Returns whose login the session cookie is.
[[nodiscard]] std::optional<Identity> identityOf(const HttpRequest &request, const Site &site);

/// Returns the refusal of a request that `identity` may not make; nullopt if it may.
[[nodiscard]] std::optional<HttpResponse> refusalOf(const HttpRequest &request, const Site &site,
                                                    Access access, const std::optional<Identity> &identity);

/// Returns the address of the client of a request that came from `peer`: of a trusted proxy's request the
/// last address in X-Forwarded-For that is not a trusted proxy itself.
[[nodiscard]] QHostAddress clientAddress(const QHostAddress &peer, const QByteArray &forwardedFor,
                                         const QVector<QHostAddress> &trustedProxies);

} // namespace web
