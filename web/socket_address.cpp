// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/socket_address.h"

#include <cstring>
#if __has_include(<netinet/in.h>)
#include <netinet/in.h>
#else
#include <ws2tcpip.h>
#endif

namespace web {

namespace {

template <typename Address>
QByteArray bytesOf(const Address &address)
{
    return {reinterpret_cast<const char *>(&address), int(sizeof address)};
}

} // namespace

QByteArray socketAddress(const QHostAddress &address, quint16 port)
{
    if (address.protocol() == QAbstractSocket::IPv4Protocol) {
        sockaddr_in result{};
        result.sin_family = AF_INET;
        result.sin_port = htons(port);
        result.sin_addr.s_addr = htonl(address.toIPv4Address());
        return bytesOf(result);
    }
    sockaddr_in6 result{};
    result.sin6_family = AF_INET6;
    result.sin6_port = htons(port);
    const Q_IPV6ADDR bytes = address.toIPv6Address();
    std::memcpy(&result.sin6_addr, bytes.c, sizeof bytes.c);
    return bytesOf(result);
}

QHostAddress addressOf(const sockaddr *address)
{
    const QHostAddress result(address);
    bool isIpv4 = false;
    const quint32 ipv4 = result.toIPv4Address(&isIpv4);
    return isIpv4 ? QHostAddress(ipv4) : result;
}

} // namespace web
