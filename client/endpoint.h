// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <optional>

namespace client {

inline constexpr quint16 kDefaultPort = 5000;

/// The address of a service: a TCP host and port, or the name of a local socket (on Unix also its path).
struct Endpoint
{
    QString host; ///< empty for a local socket
    quint16 port = kDefaultPort;
    QString localName;

    [[nodiscard]] bool isLocal() const { return host.isEmpty(); }
};

/// Parses HOST, HOST:PORT or [IPV6]:PORT; `port` is the default. An address with more than one colon and no
/// brackets is an IPv6 address alone. Returns nothing for an empty host or a port outside 1 to 65535.
[[nodiscard]] std::optional<Endpoint> parseEndpoint(const QString &text, quint16 port = kDefaultPort);

/// Returns the endpoint's name for messages.
[[nodiscard]] QString displayName(const Endpoint &endpoint);

} // namespace client
