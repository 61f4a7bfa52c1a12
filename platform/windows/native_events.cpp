// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/native_events.h"

#include <windows.h>

bool isLogoffEvent(const QByteArray &eventType, void *message)
{
    if (!eventType.startsWith("windows_") || !message) // the dispatcher's and the generic messages alike
        return false;
    const auto *const native = static_cast<const MSG *>(message);
    return native->message == WM_ENDSESSION && (native->lParam & ENDSESSION_LOGOFF) != 0;
}
