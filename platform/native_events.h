// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>

/// Returns whether a native event, as QAbstractNativeEventFilter receives it, ends the program because a user
/// logs off, which is no business of a service.
[[nodiscard]] bool isLogoffEvent(const QByteArray &eventType, void *message);
