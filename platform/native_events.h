// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

/// Whether a native event, as QAbstractNativeEventFilter gets it, tells the program to end because a user
/// logs off, which is no business of a service.
[[nodiscard]] bool isLogoffEvent(const QByteArray &eventType, void *message);
