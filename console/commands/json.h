// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "console/client/greeting.h"
#include "console/client/inventory.h"

#include <QJsonArray>
#include <QJsonObject>

/// The forms that several commands' --json have in common. docs/json.md describes them.
namespace json {

[[nodiscard]] QJsonObject drive(qint32 number, const client::Drive &drive);
[[nodiscard]] QJsonArray drives(const QVector<client::Drive> &drives);
[[nodiscard]] QJsonArray volumes(const QVector<client::Volume> &volumes);
[[nodiscard]] QJsonObject service(const client::Greeting &greeting);
/// As a JSON number while it can be one exactly, else as a text.
[[nodiscard]] QJsonValue number(quint64 value);

} // namespace json
