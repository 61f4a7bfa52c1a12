// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "monitor/health.h"

#include <QString>

class EventLog;
class smtp_sender;

/// Reports a warning or a critical state to the event log and by mail, as far as `settings` want it. A mail
/// is lost while the sender is busy; the next evaluation sends another one.
void deliverAlert(const HealthReport &report, const Settings &settings, EventLog &eventLog,
                  smtp_sender &sender);

/// Sends the mail of the test parameters (see testMail()); false when they do not fit or the sender is busy.
[[nodiscard]] bool startTestMail(smtp_sender &sender, const QString &parameters);
