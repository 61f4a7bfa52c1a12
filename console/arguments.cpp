// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/arguments.h"

#include "console/client/numbers.h"

#include <QCommandLineParser>
#include <QSet>

namespace {

constexpr double kDefaultTimeoutSeconds = 5;
constexpr double kLongestTimeoutSeconds = 86400;
constexpr int kMillisecondsPerSecond = 1000;

QCommandLineOption parserOption(const help::Option &option)
{
    QStringList names{option.name};
    if (!option.letter.isEmpty())
        names.append(option.letter);
    return QCommandLineOption(names, option.text, option.valueName);
}

/// The words of the command line that are no options. An option's value must be told from a word before
/// the command is known, so all commands' options are taken here.
QStringList bareWords(const QStringList &commandLine)
{
    QCommandLineParser parser;
    QSet<QString> known;
    QVector<help::Option> options = help::commonOptions();
    for (const help::Command &command : help::commands())
        options += command.options;
    for (const help::Option &option : options) {
        if (!known.contains(option.name))
            parser.addOption(parserOption(option));
        known.insert(option.name);
    }
    parser.parse(commandLine);
    return parser.positionalArguments();
}

QHash<QString, QStringList> givenOptions(const QCommandLineParser &parser, const help::Command &command)
{
    QHash<QString, QStringList> given;
    for (const help::Option &option : help::commonOptions() + command.options) {
        if (parser.isSet(option.name))
            given.insert(option.name, parser.values(option.name));
    }
    return given;
}

/// The time that `option` gives; `usual` without it. Nothing when what it gives is no time.
std::optional<std::chrono::milliseconds> timeOption(const Arguments &arguments, const QString &option,
                                                    double usual)
{
    const auto text = arguments.value(option);
    bool ok = true;
    const double seconds = text ? text->toDouble(&ok) : usual;
    if (!ok || !(seconds > 0) || seconds > kLongestTimeoutSeconds)
        return std::nullopt;
    return std::chrono::milliseconds(qint64(seconds * kMillisecondsPerSecond));
}

std::optional<UsageError> resolveTimes(Arguments &arguments)
{
    const QString timeout = QStringLiteral("timeout");
    const QString wait = QStringLiteral("wait");
    const auto allowed = timeOption(arguments, timeout, kDefaultTimeoutSeconds);
    const auto patience = timeOption(arguments, wait, kDefaultTimeoutSeconds);
    if (!allowed || !patience) {
        return UsageError{QStringLiteral("--timeout and --wait take seconds, more than 0 and at most a day")};
    }
    arguments.timeout = *allowed;
    arguments.isTimeoutGiven = arguments.has(timeout);
    if (arguments.has(wait))
        arguments.wait = patience;
    return std::nullopt;
}

std::optional<UsageError> resolveEndpoints(Arguments &arguments, const QString &localName)
{
    const QStringList hosts = arguments.options.value(QStringLiteral("host"));
    const auto portText = arguments.value(QStringLiteral("port"));
    const auto socket = arguments.value(QStringLiteral("socket"));
    if (socket && (portText || !hosts.isEmpty()))
        return UsageError{QStringLiteral("--socket goes with neither --host nor --port")};
    const auto port = portText ? client::strictNumber<qint32>(*portText) : client::kDefaultPort;
    if (!port || *port < 1 || *port > 65535)
        return UsageError{QStringLiteral("--port takes a number from 1 to 65535, not '%1'").arg(*portText)};
    for (const QString &host : hosts) {
        const auto endpoint = client::parseEndpoint(host, quint16(*port));
        if (!endpoint)
            return UsageError{QStringLiteral("'%1' is no HOST or HOST:PORT").arg(host)};
        arguments.endpoints.append(*endpoint);
    }
    if (arguments.endpoints.isEmpty() && portText)
        arguments.endpoints.append({QStringLiteral("127.0.0.1"), quint16(*port), {}});
    if (arguments.endpoints.isEmpty())
        arguments.endpoints.append({{}, client::kDefaultPort, socket.value_or(localName)});
    return std::nullopt;
}

std::optional<UsageError> checkPositionals(const Arguments &arguments)
{
    const auto &command = arguments.command;
    const int count = int(arguments.positionals.size());
    if (count >= command.leastArguments && (command.mostArguments < 0 || count <= command.mostArguments))
        return std::nullopt;
    return UsageError{
        QStringLiteral("usage: halvexctl %1 %2").arg(command.name, command.arguments).trimmed()};
}

} // namespace

std::optional<QString> Arguments::value(const QString &option) const
{
    const QStringList values = options.value(option);
    return values.isEmpty() ? std::nullopt : std::optional<QString>(values.last());
}

std::optional<qint32> parseDriveNumber(const QString &text)
{
    const auto number = client::strictNumber<qint32>(text);
    return number && *number >= 0 ? number : std::nullopt;
}

std::variant<Arguments, Answer, UsageError> parseArguments(const QStringList &words, const QString &localName)
{
    const QStringList commandLine = QStringList{QStringLiteral("halvexctl")} + words;
    const QStringList bare = bareWords(commandLine);
    const auto command = help::findCommand(bare);
    if (!command && !bare.isEmpty())
        return UsageError{QStringLiteral("there is no command '%1'; see halvexctl --help")
                              .arg(bare.mid(0, 2).join(QLatin1Char(' ')))};

    QCommandLineParser parser;
    for (const help::Option &option :
         help::commonOptions() + (command ? command->options : QVector<help::Option>()))
        parser.addOption(parserOption(option));
    if (!parser.parse(commandLine))
        return UsageError{parser.errorText()};
    if (parser.isSet(QStringLiteral("version")))
        return Answer{QStringLiteral("halvexctl " HALVEX_VERSION)};
    if (parser.isSet(QStringLiteral("help")))
        return Answer{command ? help::commandHelp(*command) : help::overview()};
    if (!command)
        return UsageError{QStringLiteral("a command is missing; see halvexctl --help")};

    Arguments arguments;
    arguments.command = *command;
    arguments.positionals = parser.positionalArguments().mid(help::wordCount(*command, bare));
    arguments.options = givenOptions(parser, *command);
    if (auto error = resolveTimes(arguments))
        return *error;
    if (auto error = resolveEndpoints(arguments, localName))
        return *error;
    if (arguments.endpoints.size() > 1 && command->name != QLatin1String("hosts"))
        return UsageError{QStringLiteral("only the command hosts takes several --host")};
    if (auto error = checkPositionals(arguments))
        return *error;
    return arguments;
}
