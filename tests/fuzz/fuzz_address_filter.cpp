// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/address_filter.h"

#include "fuzz/fuzz_input.h"

#include <QStringList>

#include <array>

namespace {

/// Returns the 128 bits of an address; of an IPv4 address in the form ::ffff:a.b.c.d.
std::array<quint8, 16> bitsOf(const QHostAddress &address)
{
    const Q_IPV6ADDR bytes = address.toIPv6Address();
    std::array<quint8, 16> bits{};
    std::copy(std::begin(bytes.c), std::end(bytes.c), bits.begin());
    return bits;
}

bool isIpv4(const QHostAddress &address)
{
    return address.protocol() == QAbstractSocket::IPv4Protocol;
}

/// Compares bit by bit; networks that are mapped to IPv6 are left to the tables of the tests.
bool contains(const QHostAddress &network, int length, const QHostAddress &peer)
{
    if (isIpv4(network) != isIpv4(peer))
        return false;
    const auto a = bitsOf(network);
    const auto b = bitsOf(peer);
    const int first = isIpv4(peer) ? 96 : 0;
    for (int bit = first; bit < first + length; ++bit) {
        const auto mask = quint8(0x80U >> unsigned(bit % 8));
        if ((a[std::size_t(bit / 8)] & mask) != (b[std::size_t(bit / 8)] & mask))
            return false;
    }
    return true;
}

} // namespace

/// The input is a list of networks. Checks that each item, parsed alone, admits exactly the addresses in its
/// network.
void fuzz(const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes);
    if (!AddressFilter::parse(text))
        return;
    const QHostAddress peers[] = {
        QHostAddress(QStringLiteral("192.0.2.77")), QHostAddress(QStringLiteral("127.0.0.1")),
        QHostAddress(QStringLiteral("2001:db8::77")), QHostAddress(QStringLiteral("::1"))};
    for (const QString &item : text.split(u',')) {
        const Result<AddressFilter> filter = AddressFilter::parse(item);
        require(bool(filter));
        const QHostAddress network(item.trimmed().section(u'/', 0, 0));
        const int whole = isIpv4(network) ? 32 : 128;
        const int length = item.contains(u'/') ? item.section(u'/', 1).trimmed().toInt() : whole;
        bool isMapped = false;
        (void)network.toIPv4Address(&isMapped);
        if (isMapped != isIpv4(network))
            continue;
        require(filter->allows(network));
        for (const QHostAddress &peer : peers)
            require(filter->allows(peer) == contains(network, length, peer));
    }
}
