// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/keep_alive.h"

#include <winsock2.h>

#include <mstcpip.h>

void enableKeepAlive(qintptr descriptor)
{
    tcp_keepalive options{};
    options.onoff = 1;
    options.keepalivetime = 60000;    // milliseconds without traffic before the first probe
    options.keepaliveinterval = 6000; // milliseconds between probes, of which the system sends ten
    DWORD returned = 0;
    WSAIoctl(SOCKET(descriptor), SIO_KEEPALIVE_VALS, &options, sizeof(options), nullptr, 0, &returned,
             nullptr, nullptr);
}
