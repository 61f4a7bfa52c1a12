// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/alert_policy.h"
#include "wire/result.h"

#include <QJsonObject>

// The state of the alarms as JSON, as alerts.json keeps it over restarts.

[[nodiscard]] QJsonObject alertStateDocument(const AlertState &state);

/// Parses what alertStateDocument() returned. Members that are missing or of another type read as their
/// defaults; a finding with an unknown kind or severity is left out.
[[nodiscard]] AlertState parseAlertState(const QJsonObject &json);
