// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/answer.h"
#include "web/configuration.h"
#include "web/history_store.h"
#include "web/service_work.h"
#include "web/sessions.h"
#include "web/snapshot.h"

#include <QByteArray>
#include <QDateTime>

#include <memory>
#include <optional>

namespace web {

/// The context of a handler. References outlive the server and are safe to use on its threads; all other
/// members are values of one request.
struct Site
{
    const Configuration &configuration;
    quint16 port;    ///< that the server listens on
    QString version; ///< of this program
    Sessions &sessions;
    LoginLimit &loginLimit;
    HistoryStore &history;
    ServiceGateway &gateway;
    std::shared_ptr<const Snapshot> snapshot;
    QDateTime now; ///< UTC
};

/// Returns the name of the session cookie: ports of one host share their cookies, so each has its own name.
[[nodiscard]] QByteArray cookieName(const Site &site);

/// Answers `request`: checks Host, origin, login and role, and calls the handler of its route.
[[nodiscard]] Answer answer(const HttpRequest &request, const Site &site);

} // namespace web
