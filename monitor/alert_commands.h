// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/alert_policy.h"
#include "monitor/channel_outcome.h"
#include "wire/result.h"

#include <QJsonArray>
#include <QJsonObject>

// The commands of consoles about alarms, over values.

/// The findings that an acknowledgement is about.
struct FindingName
{
    QString drive; ///< SERIAL or MODEL/SERIAL
    QString kind;  ///< empty: all
    QString id;    ///< of an attribute; empty: all
};

/// Acknowledges findings and returns their number. Fails if the drive or the kind is not known, or the ID is
/// not a number.
Result<int> acknowledgeFindings(AlertState &state, const FindingName &name);

/// Forgets a known drive that is gone. Fails for a listed and for an unknown one.
Result<void> forgetDrive(AlertState &state, const QString &name);

/// A channel as X-ALERTS lists it.
struct ChannelStatus
{
    QString name;
    bool isOn = false;
    ChannelOutcome outcome;
    int pending = 0;
};

/// Returns the document of X-ALERTS. `level` is null while it is not known.
[[nodiscard]] QJsonObject alertsDocument(const QString &policy, const std::optional<Severity> &level,
                                         const AlertState &state, const QVector<ChannelStatus> &channels);

/// Returns the worst severity of the findings that are not acknowledged.
[[nodiscard]] Severity worstOpenSeverity(const AlertState &state);
