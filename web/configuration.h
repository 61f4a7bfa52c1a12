// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/endpoint.h"
#include "wire/result.h"

#include <QByteArray>
#include <QHostAddress>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

namespace web {

enum class Role { Reader, Operator };

struct User
{
    QString name;
    Role role = Role::Reader;
    QByteArray password; ///< as --hash-password prints it
};

/// A service that is polled. `client::Endpoint` holds host and port.
struct ServiceAddress
{
    QString name; ///< unique
    client::Endpoint endpoint;
    QByteArray timeZone; ///< IANA name; empty: the service's own, else this machine's
};

struct ListenAddress
{
    QHostAddress address{QHostAddress::LocalHost};
    quint16 port = 8643; ///< 0: a free port, chosen at the start
};

/// The values of the configuration file and the options.
struct Configuration
{
    ListenAddress listen;
    QString basePath = QStringLiteral("/"); ///< begins and ends with "/"
    QStringList hosts;                      ///< further names accepted in Host, in lower case
    QString tlsCertificate;                 ///< path of a PEM file; empty: plain HTTP
    QString tlsKey;
    QVector<QHostAddress> trustedProxies;
    QVector<ServiceAddress> services;
    int pollSeconds = 60;    ///< 5 to 3600
    int retentionDays = 730; ///< 1 to 36500
    QVector<User> users;     ///< empty: everybody may read, nobody may change anything
    QByteArray metricsToken; ///< empty: none
    bool isOpen = false;     ///< serves an address that is not loopback without users
    bool allowsPlainHttp = false;

    [[nodiscard]] bool needsLogin() const { return !users.isEmpty(); }
};

/// Reads the JSON text of a configuration file. The failure names key and reason.
[[nodiscard]] Result<Configuration> parseConfiguration(const QByteArray &json);

/// Reads ADDRESS:PORT, an IPv6 address in brackets.
[[nodiscard]] std::optional<ListenAddress> parseListenAddress(const QString &text);

/// Reads [NAME=]HOST[:PORT].
[[nodiscard]] Result<ServiceAddress> parseServiceOption(const QString &text);

/// Returns why a server with `configuration` must not start: a listening address that others reach without
/// login or without TLS, or a service name that is used twice.
[[nodiscard]] Result<void> checkConfiguration(const Configuration &configuration);

} // namespace web
