// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/listen_queue.h"

#include <winsock2.h>

void lengthenListenQueue(qintptr descriptor)
{
    ::listen(SOCKET(descriptor), SOMAXCONN);
}
