// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/help.h"

namespace help {

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

Option option(const char *name, const char *valueName, const char *what)
{
    return {{}, text(name), text(valueName), text(what)};
}

Option option(char letter, const char *name, const char *valueName, const char *what)
{
    return {QString(QLatin1Char(letter)), text(name), text(valueName), text(what)};
}

/// A command that takes `least` to `most` arguments.
Command command(const char *name, const char *arguments, int least, int most, const char *summary,
                const char *description = "", const QVector<Option> &options = {})
{
    return {text(name), text(arguments), text(summary), text(description), options, least, most};
}

QVector<Command> driveCommands()
{
    return {
        command("status", "", 0, 0, "Show all drives with temperature, health and level.",
                "The levels are the service's own. A drive that gave no S.M.A.R.T. attributes is not rated.",
                {option("check", "", "Exit with 3 at warning level and 4 at critical level.")}),
        command("smart", "N", 1, 1, "Show the S.M.A.R.T. attributes of drive N."),
    };
}

QVector<Command> serviceCommands()
{
    return {
        command("raw", "LINE", 1, 1, "Send LINE as it stands and print the reply.",
                "For who knows the protocol. Characters of the reply that could steer the terminal are "
                "written as \\u{...}."),
    };
}

} // namespace

QVector<Command> commands()
{
    return driveCommands() + serviceCommands();
}

QVector<Option> commonOptions()
{
    return {
        option("host", "HOST[:PORT]", "Ask the service there over TCP."),
        option('p', "port", "PORT", "The TCP port, 5000 by default; alone, on this machine."),
        option("socket", "NAME", "Ask over this local socket, by its name or path."),
        option('t', "timeout", "SECONDS", "How long to wait for a connection and for each answer (5)."),
        option(
            "wait", "",
            "Keep asking while the service is not there, detects drives or is paused, as long as --timeout "
            "allows (120)."),
        option("json", "", "Print the answer as JSON."),
        option('q', "quiet", "", "Print nothing but the answer and errors; with status, nothing but errors."),
        option('h', "help", "", "Show help, after a command for that command."),
        option('v', "version", "", "Show the version."),
    };
}

QVector<ExitStatus> exitStatuses()
{
    return {
        {0, text("All went well; with status --check: no drive is above level fine.")},
        {1, text("The command line is wrong, or the service refuses what was asked.")},
        {2, text("No answer: nobody listens, time is up, the service detects drives or is paused, or what it "
                 "answers does not fit.")},
        {3, text("status --check: a drive is at level warning.")},
        {4, text("status --check: a drive is at level critical.")},
    };
}

} // namespace help
