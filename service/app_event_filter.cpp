// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/app_event_filter.h"

#include "platform/native_events.h"

bool QtServiceAppEventFilter::nativeEventFilter(const QByteArray &eventType, void *message, long *result)
{
    if (!isLogoffEvent(eventType, message))
        return false;
    if (result)
        *result = 0;
    return true;
}
