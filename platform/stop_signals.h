// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QObject>

#include <functional>
#include <memory>

/// Keeps the system's requests to end a program (SIGTERM, SIGINT) pending for a watcher, so that they do not
/// end the process. Must be called on the main thread before any other thread exists. They stay caught until
/// the process ends, so that a second request cannot interrupt a shutdown.
void catchStopSignals();

/// Calls `requested` in the event loop for every caught request. Made and destroyed on the thread that
/// called catchStopSignals(), while the application object exists.
[[nodiscard]] std::unique_ptr<QObject> watchStopSignals(std::function<void()> requested);
