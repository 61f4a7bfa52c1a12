// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <optional>

struct Platform;

/// Replaces the drives, volumes, accounts and event log of `platform` by those of a simulated machine that
/// they share. `machine` is the path of a machine file (docs/simulated-machine.md), or "demo" for the machine
/// built into the program. Gives an error, "file: key: reason", and leaves `platform` alone when the file is
/// not valid. The file may change later: what is not valid then goes to standard error, and the last valid
/// machine stays.
[[nodiscard]] std::optional<QString> simulateMachine(Platform &platform, const QString &machine);
