// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/settings.h"

#include <QString>

/// Returns the first line for a console: all settings, the peer as the service sees it, and the time.
/// `peer` is the number or word that stands for the console's address.
/// A text setting that holds a placeholder like "%22" has it filled by a later field: consoles rely on the
/// bytes that come of filling one placeholder after the other.
[[nodiscard]] QString greeting(const Settings &settings, const QString &hostName, const QString &peer,
                               qint64 secondsSinceEpoch);

/// Returns the reply to VER, which is shorter: version, port, poll intervals, host name.
[[nodiscard]] QString versionReply(const Settings &settings, const QString &hostName);
