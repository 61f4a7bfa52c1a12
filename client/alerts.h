// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/column.h"
#include "client/requests.h"

#include <QJsonObject>

/// The alarms of a service: findings, channels, and the requests about them.
namespace client {

/// The state of the alarms, as the service's own JSON document and as its rows.
struct Alerts
{
    QJsonObject document;
    QVector<QJsonObject> findings;
    QVector<QJsonObject> channels;
    bool isSupported = true; ///< false for a service without alarms; its document is {"supported": false}
};

/// Returns the alarms of a service without alarms if it refused the request, else `reply` itself.
[[nodiscard]] Result<Alerts> alertsOf(const Result<Alerts> &reply);

namespace requests {

[[nodiscard]] Request<Alerts> alerts();
/// Acknowledges the findings of a drive (SERIAL or MODEL/SERIAL); `kind` and `id` may be empty. The value is
/// the number of findings.
[[nodiscard]] Request<int> acknowledge(const QString &drive, const QString &kind, const QString &id);
/// Forgets a drive that is gone.
[[nodiscard]] Done forget(const QString &drive);
/// Sends a test through every channel that is on. The value is the outcome of each.
[[nodiscard]] Request<QVector<QJsonObject>> testAlerts();

} // namespace requests

[[nodiscard]] const Columns<QJsonObject> &findingColumns();
[[nodiscard]] const Columns<QJsonObject> &channelColumns();
[[nodiscard]] const Columns<QJsonObject> &alertTestColumns();

} // namespace client
