// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QProcess>

#include <memory>

/// Returns a process, not yet started, that will run in a process group of its own, with the default signal
/// handling and without descriptors of this program but its standard channels.
[[nodiscard]] std::unique_ptr<QProcess> makeProcessGroup();

/// Kills a started process with, on Linux, all processes of its group. Does not wait.
void killProcessGroup(QProcess &process);
