// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/native_events.h"

// A log-off reaches the programs of a session as a signal here, and none that are no part of it.
bool isLogoffEvent(const QByteArray &, void *)
{
    return false;
}
