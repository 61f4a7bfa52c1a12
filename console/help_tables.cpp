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

const Option kPasswordFile =
    option("password-file", "FILE", "Take the password from the first line of FILE.");
const Option kAskPassword = option("ask-password", "", "Ask for the password at the terminal.");

QVector<Command> driveCommands()
{
    return {
        command("status", "", 0, 0, "Show all drives with temperature, health and level.",
                "The levels are the service's own. A drive that gave no S.M.A.R.T. attributes is not rated.",
                {option("check", "", "Exit with 3 at warning level and 4 at critical level.")}),
        command("watch", "", 0, 0, "Show all drives on a live screen until q is pressed.",
                "The trend is that of the temperatures seen since the start. Arrows and page keys scroll.",
                {option("interval", "SECONDS", "How often to ask (2).")}),
        command("info", "N", 1, 1, "Show all that is known of drive N."),
        command("smart", "N", 1, 1, "Show the S.M.A.R.T. attributes of drive N."),
        command("volumes", "", 0, 0, "Show the volumes on the drives and their free space."),
        command("temperatures", "N", 1, 1, "Show the temperature history of drive N.",
                "Times are those of the service's own clock, such as '2026-11-15' or '2026-11-15 08:00'.",
                {option("from", "TIME", "Where the history begins (a day ago)."),
                 option("to", "TIME", "Where it ends (the latest record)."),
                 option("csv", "", "Print one record a line: time,temperatureCelsius.")}),
        command("count", "", 0, 0, "Print the number of drives."),
    };
}

QVector<Command> scanCommands()
{
    return {
        command("scan status", "[N]", 0, 1, "Show the surface scans, of all drives or of drive N.", "",
                {option("follow", "", "Show progress, speed and time left until no scan runs any more.")}),
        command(
            "scan start", "N", 1, 1, "Start a surface scan of drive N.",
            "Sectors have 512 bytes each, whatever the drive's own have. By default the whole drive is read.",
            {option("first", "SECTOR", "The first sector (0)."),
             option("last", "SECTOR", "The last sector (the drive's last)."),
             option("block", "BYTES", "Bytes to read at a time, such as 65536, 64K or 1M (256K).")}),
        command("scan stop", "N", 1, 1, "Stop the surface scan of drive N."),
        command("schedule show", "", 0, 0, "Show when drives are scanned."),
        command("schedule set", "N once DATE TIME | N daily TIME | N weekly DAY TIME", 3, 4,
                "Set when drive N is scanned as a whole.",
                "Such as 'once 2026-11-15 03:30', 'daily 03:30' or 'weekly sunday 03:30'."),
        command("schedule clear", "N", 1, 1, "Let drive N be scanned by hand only."),
    };
}

QVector<Command> settingsCommands()
{
    return {
        command("settings show", "", 0, 0, "Show the settings of the service."),
        command(
            "settings set", "NAME=VALUE...", 0, -1, "Change settings, and keep all others.",
            "Intervals take a unit, such as 90s, 3m or 1h. The mail password is not taken from the command "
            "line, except that smtpPass= forgets it.",
            {kPasswordFile, kAskPassword}),
        command(
            "mail-test", "[NAME=VALUE...]", 0, -1, "Let the service send a test mail.",
            "It goes out by the mail settings of the service. Settings given here hold for this mail only.",
            {option("body", "TEXT", "The text of the mail."),
             option("dialogue", "", "Show what service and mail server said, the login in Base64 included."),
             kPasswordFile, kAskPassword}),
        command("intervals", "[DRIVES VOLUMES]", 0, 2, "Show or set how often drives and volumes are read.",
                "Such as 'intervals 3m 5m'. They hold from the next detection on, until the service ends; "
                "settings set stores them."),
    };
}

QVector<Command> serviceCommands()
{
    return {
        command("hosts", "", 0, 0, "Ask several services at the same time, and show them in one table.", "",
                {option("hosts-file", "FILE", "Ask the hosts in FILE too: a HOST or HOST:PORT a line.")}),
        command(
            "detect", "", 0, 0, "Let the service detect its drives anew.",
            "This ends surface scans. With --wait, wait until it is done and print the number of drives."),
        command("refresh", "", 0, 0, "Let the service read drives and volumes now."),
        command("users", "", 0, 0, "Show the user accounts of the service's machine."),
        command("login", "USER", 1, 1, "Show what rights the service gives a user.",
                "The password is asked for at the terminal.", {kPasswordFile}),
        command("raw", "LINE", 1, 1, "Send LINE as it stands and print the reply.",
                "For who knows the protocol. Characters of the reply that could steer the terminal are "
                "written as \\u{...}."),
        command("completion", "", 0, 0, "Print a completion script for bash.",
                "To use it in this shell: source <(halvexctl completion)"),
        command("man", "", 0, 0, "Print the manual page.", "To read it: halvexctl man | man -l -"),
    };
}

} // namespace

QString introduction()
{
    return text("halvexctl asks a Halvex Service about the drives it watches, and tells it what to do.");
}

QString defaultService()
{
    return text("Without --host, --port and --socket the service on this machine is asked over its local "
                "socket.");
}

QVector<Command> commands()
{
    return driveCommands() + scanCommands() + settingsCommands() + serviceCommands();
}

QVector<Option> commonOptions()
{
    return {
        option("host", "HOST[:PORT]", "Ask the service there over TCP."),
        option('p', "port", "PORT", "The TCP port, 5000 by default; alone, on this machine."),
        option("socket", "NAME", "Ask over this local socket, by its name or path."),
        option('t', "timeout", "SECONDS", "How long to wait for a connection and for each answer (5)."),
        option("wait", "SECONDS",
               "Keep asking for so long while the service is not there, detects drives or is paused."),
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
