// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/address_filter.h"

#include <QStringList>

#include <algorithm>

namespace {

constexpr int kIpv4Bits = 32;
constexpr int kIpv6Bits = 128;

QHostAddress withoutMapping(const QHostAddress &address)
{
    bool isIpv4 = false;
    const quint32 ipv4 = address.toIPv4Address(&isIpv4);
    return isIpv4 ? QHostAddress(ipv4) : address;
}

Result<QPair<QHostAddress, int>> parseNetwork(const QString &text)
{
    const int slash = text.indexOf(u'/');
    const Result<QHostAddress> address = parseAddressLiteral(text.left(slash));
    if (!address)
        return address.failure();
    const bool isIpv4 = address->protocol() == QAbstractSocket::IPv4Protocol;
    const int bits = isIpv4 ? kIpv4Bits : kIpv6Bits;
    if (slash < 0)
        return qMakePair(*address, bits);
    const QString digits = text.mid(slash + 1);
    bool isNumber = false;
    const int length = digits.toInt(&isNumber);
    if (!isNumber || QString::number(length) != digits || length > bits || length < 0)
        return Error{QStringLiteral("the prefix length must be a number from 0 to %1").arg(bits)};
    return qMakePair(*address, length);
}

} // namespace

Result<QHostAddress> parseAddressLiteral(const QString &text)
{
    QHostAddress address;
    // Qt takes "10.1" for 10.0.0.1: an IPv4 address must be written out.
    if (!address.setAddress(text) ||
        (address.protocol() == QAbstractSocket::IPv4Protocol && address.toString() != text))
        return Error{QStringLiteral("must be an IPv4 or IPv6 address")};
    return address;
}

Result<AddressFilter> AddressFilter::parse(const QString &text)
{
    AddressFilter filter;
    for (const QString &item : text.split(u',')) {
        const auto network = parseNetwork(item.trimmed());
        if (!network)
            return Error{QStringLiteral("must list addresses and networks separated by commas; item %1: %2")
                             .arg(filter.m_networks.size() + 1)
                             .arg(network.failure().text)};
        filter.m_networks << *network;
    }
    return filter;
}

bool AddressFilter::allows(const QHostAddress &address) const
{
    const QHostAddress peer = withoutMapping(address);
    const auto contains = [&peer](const QPair<QHostAddress, int> &network) {
        return peer.isInSubnet(withoutMapping(network.first), network.second);
    };
    return m_networks.isEmpty() || std::any_of(m_networks.begin(), m_networks.end(), contains);
}
