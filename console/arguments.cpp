// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/arguments.h"

#include "client/numbers.h"
#include "console/help.h"

#include <QCommandLineParser>
#include <QSet>

#include <algorithm>

namespace {

constexpr double kDefaultTimeoutSeconds = 5;
constexpr double kLongestTimeoutSeconds = 86400;
constexpr int kMillisecondsPerSecond = 1000;

/// Stands for the minus sign of a negative number, which the parser would take for options.
const QChar kMinus(0x2212);

QStringList protectedNumbers(const QStringList &words)
{
    QStringList result;
    for (const QString &word : words) {
        const bool isNumber = client::isPlainDecimal(word) && word.startsWith(QLatin1Char('-'));
        result.append(isNumber ? kMinus + word.mid(1) : word);
    }
    return result;
}

QStringList restoredNumbers(QStringList words)
{
    return words.replaceInStrings(kMinus, QStringLiteral("-"));
}

void addOptions(QCommandLineParser &parser, const QVector<Option> &options)
{
    for (const Option &option : options) {
        QStringList names{option.name};
        if (!option.letter.isEmpty())
            names.append(option.letter);
        parser.addOption(QCommandLineOption(names, option.text, option.valueName));
    }
}

/// Returns the words of the command line that are not options. The parser must know all options to
/// distinguish their values from words, and the command is not known yet, so it gets those of all commands.
QStringList bareWords(const QStringList &commandLine)
{
    QCommandLineParser parser;
    QSet<QString> known;
    addOptions(parser, commonOptions());
    for (const Command &command : commands()) {
        for (const Option &option : command.options) {
            if (!known.contains(option.name))
                addOptions(parser, {option});
            known.insert(option.name);
        }
    }
    parser.parse(commandLine);
    return parser.positionalArguments();
}

QHash<QString, QStringList> givenOptions(const QCommandLineParser &parser, const Command &command)
{
    QHash<QString, QStringList> given;
    for (const Option &option : commonOptions() + command.options) {
        if (parser.isSet(option.name))
            given.insert(option.name, restoredNumbers(parser.values(option.name)));
    }
    return given;
}

/// Returns the help that `bare` asks for: of all commands, of a group, or of one command.
QString helpText(const Command *command, const QStringList &bare)
{
    if (command == nullptr)
        return help::overview();
    const auto group = commandGroup(bare.value(0));
    return bare.size() == 1 && group.size() > 1 ? help::groupHelp(group) : help::commandHelp(*command);
}

/// Returns the time that `option` gives, or `usual` without the option. Returns nothing for an invalid time.
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
    const auto waitLimit = timeOption(arguments, wait, kDefaultTimeoutSeconds);
    if (!allowed || !waitLimit) {
        return UsageError{QStringLiteral("--timeout and --wait take seconds, more than 0 and at most a day")};
    }
    arguments.timeout = *allowed;
    arguments.isTimeoutGiven = arguments.has(timeout);
    if (arguments.has(wait))
        arguments.wait = waitLimit;
    return std::nullopt;
}

std::optional<UsageError> resolveEndpoints(Arguments &arguments, const QString &localName)
{
    const QStringList hosts = arguments.options.value(QStringLiteral("host"));
    const auto portText = arguments.value(QStringLiteral("port"));
    const auto socket = arguments.value(QStringLiteral("socket"));
    if (socket && (portText || !hosts.isEmpty()))
        return UsageError{QStringLiteral("--socket cannot be combined with --host or --port")};
    const auto port = portText ? client::strictNumber<qint32>(*portText) : client::kDefaultPort;
    if (!port || *port < 1 || *port > 65535)
        return UsageError{QStringLiteral("--port takes a number from 1 to 65535, not '%1'").arg(*portText)};
    for (const QString &host : hosts) {
        const auto endpoint = client::parseEndpoint(host, quint16(*port));
        if (!endpoint)
            return UsageError{QStringLiteral("'%1' is not HOST or HOST:PORT").arg(host)};
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
    const Command &command = *arguments.command;
    const int count = int(arguments.positionals.size());
    if (count >= command.leastArguments && (command.mostArguments < 0 || count <= command.mostArguments))
        return std::nullopt;
    return UsageError{QStringLiteral("usage: halvexctl %1; see halvexctl %2 --help")
                          .arg(help::usage(command), command.name)};
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
    const QStringList commandLine = QStringList{QStringLiteral("halvexctl")} + protectedNumbers(words);
    const QStringList bare = bareWords(commandLine);
    const Command *const command = findCommand(bare);
    if (command == nullptr && !bare.isEmpty())
        return UsageError{QStringLiteral("there is no command '%1'; see halvexctl --help")
                              .arg(bare.mid(0, 2).join(QLatin1Char(' ')))};

    QCommandLineParser parser;
    addOptions(parser, commonOptions() + (command != nullptr ? command->options : QVector<Option>()));
    if (!parser.parse(commandLine))
        return UsageError{parser.errorText()};
    if (parser.isSet(QStringLiteral("version")))
        return Answer{QStringLiteral("halvexctl " HALVEX_VERSION)};
    if (parser.isSet(QStringLiteral("help")))
        return Answer{helpText(command, bare).trimmed()};
    if (command == nullptr)
        return UsageError{QStringLiteral("a command is missing; see halvexctl --help")};

    Arguments arguments;
    arguments.command = command;
    const int commandWords = std::min(int(command->name.count(QLatin1Char(' '))) + 1, int(bare.size()));
    arguments.positionals = restoredNumbers(parser.positionalArguments().mid(commandWords));
    arguments.options = givenOptions(parser, *command);
    if (auto error = resolveTimes(arguments))
        return *error;
    if (auto error = resolveEndpoints(arguments, localName))
        return *error;
    if (arguments.endpoints.size() > 1 && command->name != QLatin1String("hosts"))
        return UsageError{QStringLiteral("only the command hosts accepts several --host options")};
    if (auto error = checkPositionals(arguments))
        return *error;
    return arguments;
}
