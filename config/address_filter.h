// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "wire/result.h"

#include <QHostAddress>
#include <QPair>
#include <QVector>

/// The addresses that may connect. Default-constructed it allows all.
class AddressFilter
{
public:
    /// Parses "192.0.2.0/24, ::1": address literals and networks separated by commas, blanks around them
    /// allowed. Fails for an empty list and an empty item.
    [[nodiscard]] static Result<AddressFilter> parse(const QString &text);

    /// An IPv4 address that arrives over an IPv6 socket (::ffff:192.0.2.1) counts as the IPv4 address.
    [[nodiscard]] bool allows(const QHostAddress &address) const;

private:
    QVector<QPair<QHostAddress, int>> m_networks; ///< address and prefix length; empty: all
};

/// Parses an address literal: four decimal numbers, or an IPv6 address. Names are refused.
[[nodiscard]] Result<QHostAddress> parseAddressLiteral(const QString &text);
