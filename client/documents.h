// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/greeting.h"
#include "client/history.h"
#include "client/inventory.h"
#include "client/scans.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QTimeZone>
#include <QVector>

/// The JSON documents of parsed replies: `halvexctl --json COMMAND` prints exactly these. docs/json.md
/// describes them. Pure functions; may be called on any thread. `zone` is the time zone of the service.
namespace client::documents {

/// Returns the `service` object of `status` and `hosts`.
[[nodiscard]] QJsonObject service(const Greeting &greeting, const QTimeZone &zone);
[[nodiscard]] QJsonObject drive(const Drive &drive);
/// `status`
[[nodiscard]] QJsonObject status(const Greeting &greeting, const QVector<Drive> &drives,
                                 const QTimeZone &zone);
/// `info N`
[[nodiscard]] QJsonObject info(const Drive &drive, const QVector<Volume> &volumes);
/// `smart N`
[[nodiscard]] QJsonObject smart(const Drive &drive, const QVector<Attribute> &attributes);
/// `volumes`
[[nodiscard]] QJsonArray volumes(const QVector<Volume> &volumes);
/// `temperatures N`
[[nodiscard]] QJsonObject temperatures(qint32 drive, const QVector<TemperatureRecord> &records,
                                       const QTimeZone &zone);
/// `scan status`
[[nodiscard]] QJsonArray scans(const QVector<ScanStatus> &scans, const QTimeZone &zone);
/// `schedule show`
[[nodiscard]] QJsonArray schedule(const QVector<ScheduleEntry> &entries);
/// `settings show`; a password is replaced by whether one is set.
[[nodiscard]] QJsonObject settings(const ServiceSettings &settings);

} // namespace client::documents
