// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QHostAddress>
#include <QString>

/// The console at the other end of a connection.
struct Peer
{
    QString name;         ///< as replies contain it: the IPv4 address as one decimal number, 0, or "Local"
    QHostAddress address; ///< null for the local socket

    [[nodiscard]] bool isLocal() const { return address.isNull(); }

    /// Connections with the same key share the limits of one peer address.
    [[nodiscard]] QString key() const { return address.isNull() ? name : address.toString(); }
};
