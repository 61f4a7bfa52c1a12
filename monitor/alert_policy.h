// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/evaluation.h"

#include <chrono>

/// The memory of the alarms between two evaluations. monitor/alert_state.h stores it over restarts.
struct AlertState
{
    QVector<DriveAlerts> drives; ///< listed drives in list order, then known ones that are gone
    QDateTime lastDelivery;      ///< UTC; invalid: none yet
};

/// A message to the administrator, for every channel that is on.
struct AlertMessage
{
    enum class Event { Alert, Recovery, Reminder, Test };

    Event event = Event::Alert;
    Severity level = Severity::Fine; ///< the worst of its findings
    QVector<DriveAlerts> drives;     ///< with the findings that the message is about
};

struct AlertDecision
{
    AlertState next;
    QVector<AlertMessage> messages; ///< in the order of their delivery
};

/// The conditions for delivering messages.
struct DeliveryRules
{
    bool hasChannel = true;          ///< at least one channel is on; otherwise nothing counts as delivered
    std::chrono::hours reminder{24}; ///< 0: none
};

/// Decides what an evaluation changes and which messages follow from it. `now` is UTC; a time in `state` that
/// lies after it, because the clock was set back, counts as `now`.
[[nodiscard]] AlertDecision decideAlerts(AlertState state, const Evaluation &evaluation,
                                         const AlertRules &rules, const DeliveryRules &delivery,
                                         const QDateTime &now);

/// Names a drive in a command: SERIAL or MODEL/SERIAL.
[[nodiscard]] bool isNamed(const DriveAlerts &drive, const QString &name);
