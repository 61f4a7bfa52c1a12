// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "web/command_line.h"

#include "web/host.h"

#include <QFile>
#include <QHash>

namespace web {

namespace {

constexpr qint64 kLargestFile = qint64{4} * 1024 * 1024;

const char kHelp[] =
    R"(usage: halvex-web [--config FILE] [--listen ADDRESS:PORT] [--service [NAME=]HOST[:PORT]]... [--state FOLDER]
       halvex-web --hash-password | --check-config | --export NAME | --version | --help

Serves a page, a history and metrics of Halvex services over HTTP.

  --config FILE     the configuration (default: /etc/halvex/web.json, on Windows web.json in the state folder)
  --listen ADDRESS:PORT
                    where to serve (default: 127.0.0.1:8643); port 0 takes a free one
  --service [NAME=]HOST[:PORT]
                    a service to show, instead of the configured ones (default: 127.0.0.1:5000); may be repeated
  --state FOLDER    where the history is kept (default: $HALVEX_WEB_HOME, else /var/lib/halvex-web, on Windows
                    "Halvex Web" in ProgramData)
  --hash-password   read a password and print the line for "password" in the configuration
  --check-config    check the configuration, print what would be served, and end
  --export NAME     print the temperature history of a service as OpenMetrics, for promtool
  --version         print the version
  --help            print this text
)";

using Take = Result<void> (*)(CommandLine &, const QString &value);

Result<void> takeListen(CommandLine &line, const QString &value)
{
    line.listen = parseListenAddress(value);
    if (!line.listen)
        return Error{QStringLiteral("--listen: '%1' is not ADDRESS:PORT").arg(value)};
    return {};
}

Result<void> takeService(CommandLine &line, const QString &value)
{
    const auto service = parseServiceOption(value);
    if (!service)
        return Error{QStringLiteral("--service: %1").arg(service.failure().text)};
    line.services.append(*service);
    return {};
}

const QHash<QString, Take> &optionsWithValue()
{
    static const QHash<QString, Take> options{
        {QStringLiteral("--config"),
         [](CommandLine &line, const QString &value) {
             line.configurationFile = value;
             line.isFileRequired = true;
             return Result<void>();
         }},
        {QStringLiteral("--listen"), &takeListen},
        {QStringLiteral("--service"), &takeService},
        {QStringLiteral("--export"),
         [](CommandLine &line, const QString &value) {
             line.task = Task::Export;
             line.exportedService = value;
             return Result<void>();
         }},
        {QStringLiteral("--state"),
         [](CommandLine &line, const QString &value) {
             line.stateFolder = value;
             return Result<void>();
         }},
    };
    return options;
}

std::optional<Task> taskOf(const QString &option)
{
    static const QHash<QString, Task> tasks{
        {QStringLiteral("--hash-password"), Task::HashPassword},
        {QStringLiteral("--check-config"), Task::CheckConfiguration},
        {QStringLiteral("--version"), Task::Version},
        {QStringLiteral("--help"), Task::Help},
        {QStringLiteral("-h"), Task::Help},
    };
    const auto task = tasks.constFind(option);
    return task == tasks.constEnd() ? std::nullopt : std::optional<Task>(*task);
}

/// Reads the option at `index` and moves `index` to its value, if that is the next argument.
Result<void> takeOption(CommandLine &line, const QStringList &arguments, int &index)
{
    const QString &argument = arguments.at(index);
    if (const auto task = taskOf(argument)) {
        line.task = *task;
        return {};
    }
    const int equals =
        argument.startsWith(QLatin1String("--")) ? int(argument.indexOf(QLatin1Char('='))) : -1;
    const QString name = equals < 0 ? argument : argument.left(equals);
    const auto take = optionsWithValue().constFind(name);
    if (take == optionsWithValue().constEnd())
        return Error{QStringLiteral("'%1' is not an option").arg(argument)};
    if (equals >= 0)
        return (*take)(line, argument.mid(equals + 1));
    if (++index >= arguments.size())
        return Error{QStringLiteral("%1 needs a value").arg(name)};
    return (*take)(line, arguments.at(index));
}

Result<Configuration> readFile(const CommandLine &commandLine)
{
    QFile file(commandLine.configurationFile);
    if (!commandLine.isFileRequired && !file.exists())
        return Configuration();
    if (!file.open(QIODevice::ReadOnly))
        return Error{file.errorString()};
    const QByteArray text = file.read(kLargestFile + 1);
    if (text.size() > kLargestFile)
        return Error{QStringLiteral("is larger than 4 MiB")};
    return parseConfiguration(text);
}

} // namespace

Result<CommandLine> parseCommandLine(const QStringList &arguments)
{
    CommandLine line;
    line.stateFolder = qEnvironmentVariable("HALVEX_WEB_HOME", host::defaultStateFolder());
    for (int i = 0; i < arguments.size(); ++i) {
        if (auto taken = takeOption(line, arguments, i); !taken)
            return taken.failure();
    }
    if (line.stateFolder.isEmpty())
        return Error{QStringLiteral("--state: the folder has no name")};
    if (!line.isFileRequired)
        line.configurationFile = host::defaultConfigurationFile(line.stateFolder);
    return line;
}

Result<Configuration> loadConfiguration(const CommandLine &commandLine)
{
    const auto inFile = [&](const QString &text) {
        return Error{QStringLiteral("%1: %2").arg(commandLine.configurationFile, text)};
    };
    auto read = readFile(commandLine);
    if (!read)
        return inFile(read.failure().text);
    Configuration configuration = *std::move(read);
    configuration.listen = commandLine.listen.value_or(configuration.listen);
    if (!commandLine.services.isEmpty())
        configuration.services = commandLine.services;
    if (configuration.services.isEmpty())
        configuration.services.append(*parseServiceOption(QStringLiteral("127.0.0.1")));
    if (auto checked = checkConfiguration(configuration); !checked)
        return inFile(checked.failure().text);
    if (!configuration.tlsCertificate.isEmpty() && !host::supportsTls())
        return inFile(QStringLiteral("tls: is not supported on this system; use a reverse proxy"));
    return configuration;
}

QString helpText()
{
    return QString::fromLatin1(kHelp);
}

} // namespace web
