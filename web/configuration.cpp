// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/configuration.h"

#include "web/key_reader.h"
#include "web/passwords.h"

#include <QJsonDocument>
#include <QRegularExpression>
#include <QSet>
#include <QTimeZone>

namespace web {

namespace {

constexpr int kLargestPort = 65535;

bool isServiceName(const QString &name)
{
    static const QRegularExpression kName(QStringLiteral("\\A[A-Za-z0-9][A-Za-z0-9._-]{0,63}\\z"));
    return kName.match(name).hasMatch();
}

const QString &nameRule()
{
    static const QString rule = QStringLiteral(
        "must be 1 to 64 letters, digits, '.', '_' or '-' of ASCII and begin with a letter or digit");
    return rule;
}

/// "/disks" and "/disks/" both mean "/disks/". Characters that a path would have to escape are refused.
QString readBasePath(KeyReader &keys)
{
    static const QRegularExpression kPath(QStringLiteral("\\A/(?:[A-Za-z0-9_~-][A-Za-z0-9._~-]*/?)*\\z"));
    const QString key = QStringLiteral("basePath");
    QString path = keys.text(key, QStringLiteral("/"));
    if (!kPath.match(path).hasMatch())
        keys.refuse(key, QStringLiteral("must begin with '/' and consist of plain names"));
    if (!path.endsWith(QLatin1Char('/')))
        path += QLatin1Char('/');
    return path;
}

ListenAddress readListen(KeyReader &keys)
{
    const QString key = QStringLiteral("listen");
    if (!keys.has(key))
        return {};
    const auto address = parseListenAddress(keys.text(key));
    if (!address)
        keys.refuse(key, QStringLiteral("must be ADDRESS:PORT, with an IPv6 address in brackets"));
    return address.value_or(ListenAddress());
}

void readTls(KeyReader &keys, Configuration &configuration)
{
    const QString key = QStringLiteral("tls");
    if (!keys.has(key))
        return;
    KeyReader tls(keys.object(key), key);
    configuration.tlsCertificate = tls.text(QStringLiteral("certificate"));
    configuration.tlsKey = tls.text(QStringLiteral("key"));
    if (const auto fault = tls.fault())
        keys.refuseWhole(*fault);
    else if (configuration.tlsCertificate.isEmpty() || configuration.tlsKey.isEmpty())
        keys.refuse(key, QStringLiteral("needs the paths \"certificate\" and \"key\""));
}

QVector<QHostAddress> readProxies(KeyReader &keys)
{
    const QString key = QStringLiteral("trustedProxies");
    QVector<QHostAddress> proxies;
    for (const QString &text : keys.texts(key)) {
        const QHostAddress address(text);
        if (address.isNull())
            keys.refuse(key, QStringLiteral("'%1' is not an IP address").arg(text));
        proxies.append(address);
    }
    return proxies;
}

QStringList readHosts(KeyReader &keys)
{
    static const QRegularExpression kHost(QStringLiteral("\\A[a-z0-9_-]+(?:\\.[a-z0-9_-]+)*\\z"));
    const QString key = QStringLiteral("hosts");
    QStringList hosts;
    for (const QString &text : keys.texts(key)) {
        hosts.append(text.toLower());
        if (!kHost.match(hosts.last()).hasMatch())
            keys.refuse(key, QStringLiteral("'%1' is not a host name").arg(text));
    }
    return hosts;
}

ServiceAddress readService(KeyReader &keys)
{
    ServiceAddress service;
    service.name = keys.text(QStringLiteral("name"));
    service.endpoint.host = keys.text(QStringLiteral("host"));
    service.endpoint.port =
        quint16(keys.number(QStringLiteral("port"), client::kDefaultPort, 1, kLargestPort));
    service.timeZone = keys.text(QStringLiteral("timeZone")).toUtf8();
    if (service.endpoint.host.isEmpty())
        keys.refuse(QStringLiteral("host"), QStringLiteral("is missing"));
    if (service.name.isEmpty())
        service.name = service.endpoint.host;
    if (!isServiceName(service.name))
        keys.refuse(QStringLiteral("name"), nameRule());
    if (!service.timeZone.isEmpty() && !QTimeZone(service.timeZone).isValid())
        keys.refuse(QStringLiteral("timeZone"), QStringLiteral("is not the IANA name of a time zone"));
    return service;
}

User readUser(KeyReader &keys)
{
    static const QRegularExpression kName(QStringLiteral("\\A[^\\x00-\\x1f\\x7f]{1,64}\\z"));
    User user;
    user.name = keys.text(QStringLiteral("name"));
    const QString role = keys.text(QStringLiteral("role"));
    user.password = keys.text(QStringLiteral("password")).toLatin1();
    if (!kName.match(user.name).hasMatch())
        keys.refuse(QStringLiteral("name"), QStringLiteral("must be 1 to 64 characters"));
    if (role == QLatin1String("operator"))
        user.role = Role::Operator;
    else if (role != QLatin1String("reader"))
        keys.refuse(QStringLiteral("role"), QStringLiteral("must be \"reader\" or \"operator\""));
    if (!isPasswordHash(user.password))
        keys.refuse(QStringLiteral("password"),
                    QStringLiteral("must be a line that halvex-web --hash-password printed"));
    return user;
}

/// Reads the objects of a list with `read`; the first fault in one of them becomes the fault of `keys`.
template <typename Item>
QVector<Item> readList(KeyReader &keys, const QString &key, Item (*read)(KeyReader &))
{
    QVector<Item> items;
    for (const QJsonObject &object : keys.objects(key)) {
        const QString place = QStringLiteral("[%1]").arg(items.size());
        KeyReader itemKeys(object, key + place);
        items.append(read(itemKeys));
        if (const auto fault = itemKeys.fault())
            keys.refuseWhole(*fault);
    }
    return items;
}

} // namespace

Result<Configuration> parseConfiguration(const QByteArray &json)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(json, &error);
    if (!document.isObject()) {
        return Error{error.error == QJsonParseError::NoError
                         ? QStringLiteral("must be a JSON object")
                         : QStringLiteral("byte %1: %2").arg(error.offset).arg(error.errorString())};
    }
    KeyReader keys(document.object(), {});
    Configuration result;
    result.listen = readListen(keys);
    result.basePath = readBasePath(keys);
    result.hosts = readHosts(keys);
    readTls(keys, result);
    result.trustedProxies = readProxies(keys);
    result.services = readList(keys, QStringLiteral("services"), &readService);
    result.pollSeconds = keys.number(QStringLiteral("pollSeconds"), result.pollSeconds, 5, 3600);
    result.retentionDays = keys.number(QStringLiteral("retentionDays"), result.retentionDays, 1, 36500);
    result.users = readList(keys, QStringLiteral("users"), &readUser);
    const QString token = QStringLiteral("metricsToken");
    result.metricsToken = keys.text(token).toUtf8();
    if (keys.has(token) && result.metricsToken.isEmpty())
        keys.refuse(token, QStringLiteral("must not be empty"));
    result.isOpen = keys.flag(QStringLiteral("open"), false);
    result.allowsPlainHttp = keys.flag(QStringLiteral("plainHttp"), false);
    if (const auto fault = keys.fault())
        return Error{*fault};
    return result;
}

std::optional<ListenAddress> parseListenAddress(const QString &text)
{
    static const QRegularExpression kForm(
        QStringLiteral("\\A(?:\\[([0-9A-Fa-f:.]+)\\]|([0-9.]+)|localhost):([0-9]{1,5})\\z"));
    const auto match = kForm.match(text);
    if (!match.hasMatch() || match.captured(3).toInt() > kLargestPort)
        return std::nullopt;
    const QString literal = match.captured(1).isEmpty() ? match.captured(2) : match.captured(1);
    const QHostAddress address =
        literal.isEmpty() ? QHostAddress(QHostAddress::LocalHost) : QHostAddress(literal);
    if (address.isNull())
        return std::nullopt;
    return ListenAddress{address, quint16(match.captured(3).toInt())};
}

Result<ServiceAddress> parseServiceOption(const QString &text)
{
    const int equals = int(text.indexOf(QLatin1Char('=')));
    const auto endpoint = client::parseEndpoint(text.mid(equals + 1));
    if (!endpoint)
        return Error{QStringLiteral("'%1': must be [NAME=]HOST[:PORT]").arg(text)};
    const ServiceAddress service{equals < 0 ? endpoint->host : text.left(equals), *endpoint, {}};
    if (!isServiceName(service.name))
        return Error{QStringLiteral("'%1': the name '%2' %3").arg(text, service.name, nameRule())};
    return service;
}

Result<void> checkConfiguration(const Configuration &configuration)
{
    QSet<QString> names;
    for (const ServiceAddress &service : configuration.services) {
        if (names.contains(service.name))
            return Error{QStringLiteral("services: the name '%1' is used twice").arg(service.name)};
        names.insert(service.name);
    }
    QSet<QString> users;
    for (const User &user : configuration.users) {
        if (users.contains(user.name))
            return Error{QStringLiteral("users: the name '%1' is used twice").arg(user.name)};
        users.insert(user.name);
    }
    const QHostAddress &address = configuration.listen.address;
    if (address.isLoopback())
        return {};
    if (!configuration.needsLogin() && !configuration.isOpen)
        return Error{QStringLiteral("listen: %1 is not a loopback address: add \"users\", or set \"open\" to "
                                    "let everybody read")
                         .arg(address.toString())};
    if (configuration.needsLogin() && configuration.tlsCertificate.isEmpty() &&
        !configuration.allowsPlainHttp)
        return Error{QStringLiteral("listen: %1 is not a loopback address: add \"tls\", or set \"plainHttp\" "
                                    "on a trusted network or with a reverse proxy that uses TLS")
                         .arg(address.toString())};
    return {};
}

} // namespace web
