// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

#include <QByteArray>

/// The service as a unit of systemd, where the machine runs it.
namespace systemd_unit {

/// The unit file's text. `account` is a name of passwd; empty stands for root.
[[nodiscard]] QByteArray text(const ServiceDefinition &service, const QString &account);

/// Writes the unit and, for an automatic start, enables it; on failure nothing of it stays. A package's unit
/// is enabled as it is, unless there is an account to run under.
[[nodiscard]] ServiceOutcome install(const ServiceDefinition &service, const QString &account);

/// Disables and removes the unit; the service goes on running if it runs.
[[nodiscard]] ServiceOutcome remove();

[[nodiscard]] ServiceOutcome start();

} // namespace systemd_unit
