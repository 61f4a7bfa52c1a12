// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/native_events.h"

// A log-off sends signals to the programs of its session, which never include the service.
bool isLogoffEvent(const QByteArray &, void *)
{
    return false;
}
