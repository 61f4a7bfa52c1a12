// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/endpoint.h"

#include "client/numbers.h"

namespace client {

namespace {

std::optional<Endpoint> withPort(const QString &host, const QString &portText)
{
    const auto port = strictNumber<qint32>(portText);
    if (host.isEmpty() || !port || *port < 1 || *port > 65535)
        return std::nullopt;
    return Endpoint{host, quint16(*port), {}};
}

} // namespace

std::optional<Endpoint> parseEndpoint(const QString &text, quint16 port)
{
    const QString trimmed = text.trimmed();
    const QString defaultPort = QString::number(port);
    if (trimmed.startsWith(QLatin1Char('['))) {
        const int close = int(trimmed.indexOf(QLatin1Char(']')));
        if (close < 0)
            return std::nullopt;
        const QString host = trimmed.mid(1, close - 1);
        const QString rest = trimmed.mid(close + 1);
        if (rest.isEmpty())
            return withPort(host, defaultPort);
        return rest.startsWith(QLatin1Char(':')) ? withPort(host, rest.mid(1)) : std::nullopt;
    }
    if (trimmed.count(QLatin1Char(':')) != 1)
        return withPort(trimmed, defaultPort);
    return withPort(trimmed.section(QLatin1Char(':'), 0, 0), trimmed.section(QLatin1Char(':'), 1));
}

QString displayName(const Endpoint &endpoint)
{
    if (endpoint.isLocal())
        return QStringLiteral("local socket %1").arg(endpoint.localName);
    const bool isIpv6 = endpoint.host.contains(QLatin1Char(':'));
    return (isIpv6 ? QStringLiteral("[%1]:%2") : QStringLiteral("%1:%2"))
        .arg(endpoint.host)
        .arg(endpoint.port);
}

} // namespace client
