// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/alert_policy.h"

#include <QJsonArray>
#include <QJsonObject>

/// Returns the text of a message, as event log and mail have it: a block for each drive, without a line feed
/// at the end.
[[nodiscard]] QString messageText(const AlertMessage &message);

/// Returns the words of JSON documents.
[[nodiscard]] QString eventWord(AlertMessage::Event event);
[[nodiscard]] QString severityWord(Severity severity);
[[nodiscard]] QString kindWord(FindingKind kind);

/// Parses the words above.
[[nodiscard]] std::optional<AlertMessage::Event> parseEvent(const QString &word);
[[nodiscard]] std::optional<Severity> parseSeverity(const QString &word);
[[nodiscard]] std::optional<FindingKind> parseKind(const QString &word);

/// Formats a UTC time as ISO 8601 with "Z"; null if invalid.
[[nodiscard]] QJsonValue timeValue(const QDateTime &utc);

/// Returns the members of a finding that webhook, program and X-ALERTS share. A member that does not apply is
/// null.
[[nodiscard]] QJsonObject findingDocument(const Finding &finding);

/// Returns the document that webhook and program get. `host` is the name of this machine.
[[nodiscard]] QJsonObject messageDocument(const AlertMessage &message, const QString &text,
                                          const QString &host, const QDateTime &utc);
