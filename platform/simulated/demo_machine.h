// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

/// Returns the text of demo_machine.json, which is compiled into the program.
[[nodiscard]] QByteArray demoMachineJson();
