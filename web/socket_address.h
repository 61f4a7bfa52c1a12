// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QHostAddress>

struct sockaddr;

/// Conversions between Qt's addresses and those of the system's sockets.
namespace web {

/// Returns a sockaddr_in or sockaddr_in6 as bytes.
[[nodiscard]] QByteArray socketAddress(const QHostAddress &address, quint16 port);

/// Returns the address that `address` holds, an IPv4 address mapped into IPv6 as IPv4.
[[nodiscard]] QHostAddress addressOf(const sockaddr *address);

} // namespace web
