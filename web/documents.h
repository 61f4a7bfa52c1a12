// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/history.h"
#include "web/snapshot.h"

#include <QJsonObject>

/// The JSON documents of the API that the console does not have.
namespace web {

/// Returns the element of GET /api/v1/services for `service`.
[[nodiscard]] QJsonObject serviceDocument(const ServiceSnapshot &service);

/// Returns the element of GET /api/v1/overview for `service`.
[[nodiscard]] QJsonObject overviewDocument(const ServiceSnapshot &service);

[[nodiscard]] QJsonObject eventDocument(const Event &event);
[[nodiscard]] QJsonObject formerDriveDocument(const KnownDrive &drive);

/// Returns the word of a level from 1 to 3; null for any other number.
[[nodiscard]] QJsonValue levelValue(int level);

/// Returns `time` in ISO 8601 with Z; null for an invalid time.
[[nodiscard]] QJsonValue timeValue(const QDateTime &time);
[[nodiscard]] QJsonValue timeValue(qint64 secondsSinceEpoch);

} // namespace web
