// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/service_options.h"

#include "config/logging.h"
#include "platform/service_key.h"
#include "platform/trusted_program.h"
#include "wire/service_key_table.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSslSocket>
#include <QStringList>

#include <algorithm>
#include <utility>

namespace {

/// An authority file of a distribution has about 200 KiB.
constexpr qint64 kMaxAuthorityFileSize = 16 * 1024 * 1024;

Result<QString> absolutePath(const QString &text)
{
    if (!QDir::isAbsolutePath(text) || text.contains(QChar(u'\0')))
        return Error{QStringLiteral("must be an absolute path")};
    return text;
}

Result<QList<QSslCertificate>> authorities(const QString &text)
{
    const Result<QString> path = absolutePath(text);
    if (!path)
        return path.failure();
    QFile file(*path);
    if (!QFileInfo(*path).isFile() || !file.open(QIODevice::ReadOnly))
        return Error{QStringLiteral("names a file that cannot be read")};
    const auto certificates = QSslCertificate::fromData(file.read(kMaxAuthorityFileSize), QSsl::Pem);
    if (certificates.isEmpty())
        return Error{QStringLiteral("names a file without a certificate in PEM form")};
    return certificates;
}

Result<SmtpSecurity> smtpSecurity(const QString &text)
{
    const bool isStartTls = text == QLatin1String("starttls");
    if (text == QLatin1String("none"))
        return SmtpSecurity::None;
    if (!isStartTls && text != QLatin1String("tls"))
        return Error{QStringLiteral("must be none, starttls or tls")};
    if (!QSslSocket::supportsSsl())
        return Error{QStringLiteral("needs TLS, which this system does not provide")};
    return isStartTls ? SmtpSecurity::StartTls : SmtpSecurity::Tls;
}

Result<AlertPolicy> alertPolicy(const QString &text)
{
    if (text == QLatin1String("every"))
        return AlertPolicy::Every;
    if (text == QLatin1String("changes"))
        return AlertPolicy::Changes;
    return Error{QStringLiteral("must be every or changes")};
}

Result<QVector<quint32>> attributeIds(const QString &text)
{
    constexpr quint32 kHighestId = 255;
    QVector<quint32> ids;
    if (text.isEmpty())
        return ids;
    for (const QString &item : text.split(u',')) {
        bool isNumber = false;
        const quint32 id = item.trimmed().toUInt(&isNumber);
        if (!isNumber || id == 0 || id > kHighestId)
            return Error{QStringLiteral("must list attribute IDs from 1 to 255 separated by commas")};
        if (!ids.contains(id))
            ids << id;
    }
    std::sort(ids.begin(), ids.end());
    return ids;
}

Result<QUrl> webhookUrl(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    const bool isHttps = url.scheme() == QLatin1String("https");
    if (!url.isValid() || url.host().isEmpty() || (!isHttps && url.scheme() != QLatin1String("http")))
        return Error{QStringLiteral("must be an http or https URL")};
    if (isHttps && !QSslSocket::supportsSsl())
        return Error{QStringLiteral("needs TLS, which this system does not provide")};
    return url;
}

template <typename T>
Result<void> store(T &field, const Result<T> &parsed)
{
    if (!parsed)
        return parsed.failure();
    field = *parsed;
    return {};
}

/// A queue of mails must not wait for ever for one silent server.
Result<void> storePolicy(ServiceOptions &options, const Result<AlertPolicy> &policy)
{
    constexpr std::chrono::seconds kReplyTimeoutWithQueue{60};
    if (policy && *policy == AlertPolicy::Changes)
        options.smtpReplyTimeout = kReplyTimeoutWithQueue;
    return store(options.alertPolicy, policy);
}

const QString &text(const KeyValue &value)
{
    return std::get<QString>(value);
}

bool flag(const KeyValue &value)
{
    return std::get<quint32>(value) != 0;
}

/// Stores one option, whose type and range have been checked.
struct OptionRow
{
    const char *name;
    Result<void> (*store)(ServiceOptions &options, const KeyValue &value);
};

// clang-format off
const OptionRow kOptions[] = {
    {"ListenAddress", [](auto &o, auto &v) { return store(o.listenAddress, parseAddressLiteral(text(v))); }},
    {"AllowFrom", [](auto &o, auto &v) { return store(o.allowFrom, AddressFilter::parse(text(v))); }},
    {"ProtectMail", [](auto &o, auto &v) { return store<bool>(o.protectMail, flag(v)); }},
    {"RemoteAcknowledge", [](auto &o, auto &v) { return store<bool>(o.remoteAcknowledge, flag(v)); }},
    {"LogFile", [](auto &o, auto &v) { return store(o.logFile, absolutePath(text(v))); }},
    {"SkipStandbyDrives", [](auto &o, auto &v) { return store<bool>(o.skipStandbyDrives, flag(v)); }},
    {"SmtpSecurity", [](auto &o, auto &v) { return store(o.smtpSecurity, smtpSecurity(text(v))); }},
    {"SmtpCaFile", [](auto &o, auto &v) { return store(o.smtpAuthorities, authorities(text(v))); }},
    // The policy decides which default the time below has.
    {"AlertPolicy", [](auto &o, auto &v) { return storePolicy(o, alertPolicy(text(v))); }},
    {"SmtpReplyTimeout", [](auto &o, auto &v) {
         return store<std::chrono::seconds>(o.smtpReplyTimeout, std::chrono::seconds(std::get<quint32>(v)));
     }},
    {"AlertReminderHours", [](auto &o, auto &v) {
         return store<std::chrono::hours>(o.alertReminder, std::chrono::hours(std::get<quint32>(v)));
     }},
    {"AlertGrowth", [](auto &o, auto &v) { return store(o.alertGrowth, attributeIds(text(v))); }},
    {"AlertWebhook", [](auto &o, auto &v) { return store(o.alertWebhook, webhookUrl(text(v))); }},
    {"AlertProgram", [](auto &o, auto &v) { return store(o.alertProgram, trustedProgram(text(v))); }},
};
// clang-format on

/// Checks a value's type and, of a number, its range.
Result<void> check(const ServiceKeyRow &row, const std::optional<KeyValue> &value)
{
    if (row.type == ServiceKeyRow::Type::Text) {
        if (value && std::holds_alternative<QString>(*value))
            return {};
        return Error{QStringLiteral("must be a text")};
    }
    const quint32 *const number = value ? std::get_if<quint32>(&*value) : nullptr;
    if (number && *number >= row.lowest && *number <= row.highest)
        return {};
    return Error{QStringLiteral("must be a number from %1 to %2").arg(row.lowest).arg(row.highest)};
}

void logOption(const ServiceKeyRow &row, const KeyValue &value)
{
    const auto *const number = std::get_if<quint32>(&value);
    const QString shown = number ? QString::number(*number) : std::get<QString>(value);
    qCInfo(lcConfig) << "The option" << row.name << "is" << (row.isSecret ? QStringLiteral("set") : shown);
}

Result<void> readOption(const OptionRow &option, const OpenKey &key, ServiceOptions &options)
{
    const QString name = QString::fromLatin1(option.name);
    const std::optional<KeyValue> value = key.value(name);
    const ServiceKeyRow &row = *findServiceKeyRow(name);
    Result<void> outcome = check(row, value);
    if (outcome)
        outcome = option.store(options, *value);
    if (outcome) {
        logOption(row, *value);
        return {};
    }
    return Error{QStringLiteral("The option %1 of the service key %2").arg(name, outcome.failure().text)};
}

void warnOfMisspellings(const QStringList &names)
{
    for (const QString &name : names) {
        const QString similar = similarServiceKeyName(name);
        if (!similar.isEmpty())
            qCWarning(lcConfig) << "The service key holds" << name << "which is not an option; did you mean"
                                << similar;
    }
}

} // namespace

Result<ServiceOptions> readServiceOptions(ServiceKey &key)
{
    ServiceOptions options;
    const auto opened = key.open();
    if (!opened && opened.failure().kind == AccessError::Kind::Failed)
        return Error{QStringLiteral("The service could not start: ") + opened.failure().text};
    if (!opened)
        return options;
    const OpenKey &values = **opened;
    const QStringList names = values.names();
    warnOfMisspellings(names);
    for (const OptionRow &option : kOptions) {
        if (!names.contains(QLatin1String(option.name)))
            continue;
        const Result<void> outcome = readOption(option, values, options);
        if (!outcome)
            return outcome.failure();
    }
    return options;
}
