// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/command.h"

#include <algorithm>

Option option(const char *name, const char *valueName, const char *text)
{
    return {{}, QString::fromUtf8(name), QString::fromUtf8(valueName), QString::fromUtf8(text)};
}

Command command(const char *name, const char *arguments, int least, int most, void (*run)(Context &),
                const char *summary, const char *description, const QVector<Option> &options)
{
    return {QString::fromUtf8(name),    QString::fromUtf8(arguments),   least,   most, run,
            QString::fromUtf8(summary), QString::fromUtf8(description), options, {},   {}};
}

const QVector<Command> &commands()
{
    static const QVector<Command> kCommands = driveCommands() + watchCommands() + temperatureCommands() +
                                              scanCommands() + scheduleCommands() + alertCommands() +
                                              settingsCommands() + hostsCommands() + serviceCommands();
    return kCommands;
}

const QVector<Option> &commonOptions()
{
    const auto withLetter = [](char letter, const char *name, const char *valueName, const char *text) {
        Option result = option(name, valueName, text);
        result.letter = QChar::fromLatin1(letter);
        return result;
    };
    static const QVector<Option> kOptions{
        option("host", "HOST[:PORT]", "Ask the service on this host over TCP."),
        withLetter('p', "port", "PORT", "The TCP port, 5000 by default; without --host on this machine."),
        option("socket", "NAME", "Ask over this local socket, by its name or path."),
        withLetter('t', "timeout", "SECONDS", "Time limit for a connection and for each reply (5)."),
        option(
            "wait", "SECONDS",
            "Ask again for up to this time while the service is not running, detects drives or is paused."),
        option("json", "", "Print the result as JSON."),
        withLetter('q', "quiet", "", "Print only the result and errors; with status, only errors."),
        withLetter('h', "help", "", "Show help; after a command, the help of that command."),
        withLetter('v', "version", "", "Show the version."),
    };
    return kOptions;
}

const Command *findCommand(const QStringList &words)
{
    const QVector<Command> &all = commands();
    const auto find = [&all](const auto &matches) -> const Command * {
        const auto found = std::find_if(all.cbegin(), all.cend(), matches);
        return found == all.cend() ? nullptr : &*found;
    };
    const QString group = words.value(0) + QLatin1Char(' ');
    if (const auto *two = find([&](const Command &c) { return c.name == group + words.value(1); }))
        return two;
    if (const auto *one = find([&](const Command &c) { return c.name == words.value(0); }))
        return one;
    return words.size() == 1 ? find([&](const Command &c) { return c.name.startsWith(group); }) : nullptr;
}

QVector<Command> commandGroup(const QString &word)
{
    QVector<Command> group;
    std::copy_if(commands().cbegin(), commands().cend(), std::back_inserter(group),
                 [&](const Command &c) { return c.name.section(QLatin1Char(' '), 0, 0) == word; });
    return group;
}
