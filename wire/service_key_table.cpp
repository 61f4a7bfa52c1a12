// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "wire/service_key_table.h"

#include "wire/poll_limits.h"

#include <QString>

#include <algorithm>
#include <limits>

namespace {

using Type = ServiceKeyRow::Type;
using Writer = ServiceKeyRow::Writer;

constexpr quint32 kNoLimit = std::numeric_limits<quint32>::max();

ServiceKeyRow number(const char *name, Writer writer, quint32 lowest, quint32 highest,
                     const char *defaultText, const char *help)
{
    return {QLatin1String(name),        Type::Number,       writer, lowest, highest,
            QLatin1String(defaultText), QLatin1String(help)};
}

ServiceKeyRow text(const char *name, Writer writer, const char *defaultText, const char *help)
{
    return {QLatin1String(name), Type::Text, writer, 0, 0, QLatin1String(defaultText), QLatin1String(help)};
}

ServiceKeyRow numberOption(const char *name, quint32 highest, const char *defaultText, const char *help)
{
    return number(name, Writer::Administrator, 0, highest, defaultText, help);
}

ServiceKeyRow textOption(const char *name, const char *defaultText, const char *help)
{
    return text(name, Writer::Administrator, defaultText, help);
}

ServiceKeyRow secretOption(const char *name, const char *defaultText, const char *help)
{
    ServiceKeyRow row = textOption(name, defaultText, help);
    row.isSecret = true;
    return row;
}

/// Returns the number of insertions, removals and replacements of one character that make `a` into `b`.
int editDistance(const QString &a, const QString &b)
{
    QVector<int> costs(b.size() + 1); // of making the first i characters of `a` into the first j of `b`
    for (int j = 0; j <= b.size(); ++j)
        costs[j] = j;
    for (int i = 1; i <= a.size(); ++i) {
        int diagonal = costs.at(0);
        costs[0] = i;
        for (int j = 1; j <= b.size(); ++j) {
            const int replaced = diagonal + (a.at(i - 1) == b.at(j - 1) ? 0 : 1);
            diagonal = costs.at(j);
            costs[j] = std::min({replaced, costs.at(j) + 1, costs.at(j - 1) + 1});
        }
    }
    return costs.last();
}

} // namespace

const QVector<ServiceKeyRow> &serviceKeyTable()
{
    static const QVector<ServiceKeyRow> rows{
        text("ImagePath", Writer::Installer, "none",
             "Path of the service program; its folder holds the settings file."),
        number("Port", Writer::Service, 0, kNoLimit, "5000", "TCP port for consoles."),
        number("SMARTPollInterval", Writer::Service, kShortestPollSeconds, kLongestPollSeconds, "180",
               "Seconds between two polls of the drives."),
        number("FreeSpacePollInterval", Writer::Service, kShortestPollSeconds, kLongestPollSeconds, "300",
               "Seconds between two readings of the volumes."),
        textOption("ListenAddress", "all", "Address on which TCP consoles reach the service."),
        textOption("AllowFrom", "all",
                   "Addresses and networks that may connect, separated by commas: 192.0.2.0/24,::1"),
        numberOption("ProtectMail", 1, "0",
                     "1: consoles cannot read the mail password, and not change the mail settings over TCP."),
        numberOption(
            "RemoteAcknowledge", 1, "0",
            "1: consoles of other machines may acknowledge findings, forget drives and test alarms."),
        textOption("LogFile", "none", "Absolute path of a file for the log, beside its usual place."),
        numberOption("SkipStandbyDrives", 1, "0", "1: polls do not wake a drive that is in standby."),
        numberOption("SmtpReplyTimeout", 3600, "0, with AlertPolicy changes 60",
                     "Seconds that a mail server may be silent; 0: no limit."),
        textOption("SmtpSecurity", "none",
                   "none, starttls or tls; with TLS the server's certificate is verified."),
        textOption("SmtpCaFile", "the system's",
                   "PEM file of the authorities that mail servers are verified with."),
        textOption("AlertPolicy", "every",
                   "every: deliver after every evaluation; changes: deliver what is new, and reminders."),
        numberOption("AlertReminderHours", 8760, "24", "With changes: hours between reminders; 0: none."),
        textOption("AlertGrowth", "5,187,196,197,198",
                   "With changes: attributes whose raw value must not grow; empty: none."),
        secretOption("AlertWebhook", "none", "http or https URL that alerts are posted to; keep it secret."),
        textOption("AlertProgram", "none", "Absolute path of a program that is started for alerts."),
    };
    return rows;
}

const ServiceKeyRow *findServiceKeyRow(const QString &name)
{
    for (const ServiceKeyRow &row : serviceKeyTable()) {
        if (row.name == name)
            return &row;
    }
    return nullptr;
}

QString similarServiceKeyName(const QString &name)
{
    constexpr int kLettersPerMistake = 4; // a short name may differ in less, or everything resembles it
    if (findServiceKeyRow(name) || name.size() > 64)
        return {};
    for (const ServiceKeyRow &row : serviceKeyTable()) {
        const int distance = editDistance(name.toLower(), QString(row.name).toLower());
        if (distance <= std::min(2, row.name.size() / kLettersPerMistake))
            return row.name;
    }
    return {};
}
