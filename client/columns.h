// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/column.h"
#include "client/inventory.h"
#include "client/scans.h"
#include "client/short_replies.h"

#include <QTimeZone>

/// The columns of the replies' values. docs/json.md describes their keys.
namespace client {

struct TemperatureRecord;

/// Returns "fine", "warning", "critical", or "not rated".
[[nodiscard]] QString levelName(Level level);
[[nodiscard]] Tone levelTone(Level level);
/// Returns the level's name, or null if there is none.
[[nodiscard]] QJsonValue levelValue(Level level);

/// Returns the name of an attribute: that of the service's catalogue, else one of the names in common use for
/// attributes that the catalogue lacks, else "Unknown attribute".
[[nodiscard]] QString attributeName(quint32 id);

/// Returns "none", "once", "daily", "weekly" or "unknown", and the kind of a name.
[[nodiscard]] QString scheduleKindName(ScheduleKind kind);
[[nodiscard]] std::optional<ScheduleKind> scheduleKind(const QString &name);
/// Returns the number of a weekday, 0 for "monday" to 6 for "sunday".
[[nodiscard]] std::optional<qint32> weekdayNumber(const QString &name);
/// Returns a description: "daily at 03:30:00", or why the schedule never starts a scan.
[[nodiscard]] QString scheduleText(const ScheduleEntry &entry);

/// Returns "running", "failed", "done", "stopped" or "never": the state of a drive's latest scan.
[[nodiscard]] QString scanStateName(const ScanStatus &status);

[[nodiscard]] const Columns<Drive> &driveColumns();
/// Returns the column of `key`, which must exist.
[[nodiscard]] Column<Drive> driveColumn(const char *key);
[[nodiscard]] const Columns<Attribute> &attributeColumns();
[[nodiscard]] const Columns<Volume> &volumeColumns();
[[nodiscard]] const Columns<ScheduleEntry> &scheduleColumns();
[[nodiscard]] const Columns<UserAccount> &userColumns();
/// `zone` is the time zone of the service.
[[nodiscard]] Columns<ScanStatus> scanColumns(const QTimeZone &zone);
[[nodiscard]] Columns<TemperatureRecord> temperatureColumns(const QTimeZone &zone);

} // namespace client
