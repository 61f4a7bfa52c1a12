// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "web/metrics/families.h"

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QString>

#include <functional>
#include <memory>
#include <optional>

struct sockaddr;

/// The functions of the system that Qt does not offer. One file for each system implements them.
namespace web::host {

/// Returns a sockaddr_in or sockaddr_in6 as bytes.
[[nodiscard]] QByteArray socketAddress(const QHostAddress &address, quint16 port);

/// Returns the address that `address` holds, an IPv4 address mapped into IPv6 as IPv4.
[[nodiscard]] QHostAddress addressOf(const sockaddr *address);

/// Sends `lastBytes` without waiting and ends the connection in both directions; the descriptor stays open.
void endConnection(quintptr socket, const QByteArray &lastBytes);

/// Calls `requested` in the event loop when the system asks the program to end.
[[nodiscard]] std::unique_ptr<QObject> watchStopRequests(std::function<void()> requested);

/// Reads a line that is not shown while it is typed at the terminal; from standard input, if that is not a
/// terminal. Returns nullopt at its end.
[[nodiscard]] std::optional<QString> readPassword(const QString &prompt);

/// The configuration file that is read where no option names one, and the state folder by default.
[[nodiscard]] QString defaultConfigurationFile(const QString &stateFolder);
[[nodiscard]] QString defaultStateFolder();

/// The resources of this process now.
[[nodiscard]] metrics::ProcessFigures processFigures();

/// Returns whether the HTTP server can serve TLS by itself here.
[[nodiscard]] bool supportsTls();

} // namespace web::host
