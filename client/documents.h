// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/greeting.h"
#include "client/history.h"
#include "client/inventory.h"

#include <QJsonObject>
#include <QTimeZone>
#include <QVector>

/// The JSON documents that consist of more than rows; a list of rows is toArray() of its columns. `halvexctl
/// --json COMMAND` prints exactly these. docs/json.md describes them. Pure functions; may be called on any
/// thread. `zone` is the time zone of the service.
namespace client::documents {

/// Returns the `service` object of `status` and `hosts`.
[[nodiscard]] QJsonObject service(const Greeting &greeting, const QTimeZone &zone);
/// Returns the document of `status`.
[[nodiscard]] QJsonObject status(const Greeting &greeting, const QVector<Drive> &drives,
                                 const QTimeZone &zone);
/// Returns the document of `info N`.
[[nodiscard]] QJsonObject info(const Drive &drive, const QVector<Volume> &volumes);
/// Returns the document of `smart N`.
[[nodiscard]] QJsonObject smart(const Drive &drive, const QVector<Attribute> &attributes);
/// Returns the document of `temperatures N`.
[[nodiscard]] QJsonObject temperatures(qint32 drive, const QVector<TemperatureRecord> &records,
                                       const QTimeZone &zone);
/// Returns the document of `settings show`; a password is replaced by whether one is set.
[[nodiscard]] QJsonObject settings(const ServiceSettings &settings);

} // namespace client::documents
