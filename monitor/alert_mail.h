// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"
#include "monitor/smtp_dialogue.h"

#include <QDateTime>
#include <QString>

#include <optional>

/// The mail that reports `alertText`, whose lines end in line feeds. `alertLevel` is level::kWarning or
/// level::kCritical, `now` local time.
[[nodiscard]] SmtpMail alertMail(qint32 alertLevel, const QString &alertText, const Settings &settings,
                                 const QString &hostName, const QDateTime &now);

/// The mail that a console tries its settings with: port, need auth, from, to, server, subject, user,
/// password and text, separated by "~;". Empty when fields are missing.
[[nodiscard]] std::optional<SmtpMail> testMail(const QString &parameters);
