// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/listen_queue.h"

#include <sys/socket.h>

void lengthenListenQueue(qintptr descriptor)
{
    ::listen(int(descriptor), SOMAXCONN);
}
