// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <optional>

struct Platform;

/// Replaces the drives, volumes, accounts and event log of `platform` by those of one simulated machine.
/// `machine` is the path of a machine file (docs/simulated-machine.md), or "demo" for the machine built into
/// the program. Returns an error, "file: key: reason", and leaves `platform` unchanged if the file is not
/// valid. If the file becomes invalid later, the error is written to standard error and the last valid
/// machine stays in use.
[[nodiscard]] std::optional<QString> simulateMachine(Platform &platform, const QString &machine);
