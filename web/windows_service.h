// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <functional>

/// The program as a service of the system's service manager. Nothing happens if that has not started it.
namespace web::windows_service {

/// Connects to the service manager. `stopRequested` is called on a thread of the system. Returns whether the
/// manager has started the program. May be called once.
bool connect(std::function<void()> stopRequested);

/// Returns whether connect() has returned true.
[[nodiscard]] bool isManaged();

/// Reports that the service runs.
void reportRunning();

/// Writes `text` to the event log. The end of the service counts as a failure from now on.
void reportFailure(const QString &text);

/// Reports the end. `stopRequested` is not called any more when this returns.
void reportStopped();

} // namespace web::windows_service
