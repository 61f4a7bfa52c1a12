// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

/// The text of demo_machine.json, which is part of the program.
[[nodiscard]] QByteArray demoMachineJson();
