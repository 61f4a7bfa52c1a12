// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/keep_alive.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

void enableKeepAlive(qintptr descriptor)
{
    const auto set = [descriptor](int level, int option, int value) {
        ::setsockopt(int(descriptor), level, option, &value, sizeof(value));
    };
    set(IPPROTO_TCP, TCP_KEEPIDLE, 60);  // seconds without traffic before the first probe
    set(IPPROTO_TCP, TCP_KEEPINTVL, 15); // seconds between probes
    set(IPPROTO_TCP, TCP_KEEPCNT, 4);    // unanswered probes that end the connection
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
}
