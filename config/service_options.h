// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "config/address_filter.h"
#include "wire/result.h"

#include <QList>
#include <QSslCertificate>
#include <QString>
#include <QUrl>
#include <QVector>

#include <chrono>

class ServiceKey;

enum class SmtpSecurity { None, StartTls, Tls };
enum class AlertPolicy { Every, Changes };

/// The options of the service's key (wire/service_key_table.h). Read once at the start and then constant, so
/// any thread may read them.
struct ServiceOptions
{
    QHostAddress listenAddress{QHostAddress::Any};
    AddressFilter allowFrom;
    bool protectMail = false;
    bool remoteAcknowledge = false;
    QString logFile; ///< absolute; empty: none
    bool skipStandbyDrives = false;
    std::chrono::seconds smtpReplyTimeout{0}; ///< 0: no limit
    SmtpSecurity smtpSecurity = SmtpSecurity::None;
    QList<QSslCertificate> smtpAuthorities; ///< empty: the system's
    AlertPolicy alertPolicy = AlertPolicy::Every;
    std::chrono::hours alertReminder{24};                ///< 0: none
    QVector<quint32> alertGrowth{5, 187, 196, 197, 198}; ///< attribute IDs, ascending
    QUrl alertWebhook;                                   ///< secret; empty: none
    QString alertProgram;                                ///< absolute, links resolved; empty: none
};

/// Reads the options; defaults if there is no key. Fails if there is one that cannot be read, because it may
/// hold options that protect. Logs a name that resembles an option's at warning. Fails on a value that cannot
/// be understood, with a text that names the option and holds no value that is secret.
[[nodiscard]] Result<ServiceOptions> readServiceOptions(ServiceKey &key);
