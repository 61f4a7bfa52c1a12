// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

/// Returns whether a native event, as QAbstractNativeEventFilter receives it, would end the program because a
/// user logs off. A service ignores such events.
[[nodiscard]] bool isLogoffEvent(const QByteArray &eventType, void *message);
