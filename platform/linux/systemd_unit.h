// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

#include <QByteArray>

/// The service as a unit of systemd, on machines that systemd manages.
namespace systemd_unit {

/// Returns the unit file's text. `account` is a name of passwd; empty for root.
[[nodiscard]] QByteArray text(const ServiceDefinition &service, const QString &account);

/// Writes the unit and, for an automatic start, enables it; on failure removes what it wrote. A package's
/// unit is enabled unchanged, unless there is an account to run under.
[[nodiscard]] ServiceOutcome install(const ServiceDefinition &service, const QString &account);

/// Disables and removes the unit; a running service continues to run.
[[nodiscard]] ServiceOutcome remove();

[[nodiscard]] ServiceOutcome start();

} // namespace systemd_unit
