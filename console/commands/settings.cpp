// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/documents.h"
#include "client/settings_table.h"
#include "client/units.h"
#include "console/context.h"
#include "console/secret.h"
#include "wire/poll_limits.h"

namespace {

namespace requests = client::requests;
using client::Setting;

constexpr qint64 kShortestInterval = kShortestPollSeconds * 1000;
constexpr qint64 kLongestInterval = kLongestPollSeconds * 1000;

bool isMailSetting(const Setting &setting)
{
    return setting.name.startsWith(QLatin1String("smtp"));
}

QStringList mailSettingNames()
{
    QStringList names;
    for (const Setting &setting : client::settingsTable()) {
        if (isMailSetting(setting))
            names.append(setting.name);
    }
    return names;
}

/// Returns the service's settings with the arguments and the password applied.
ServiceSettings changedSettings(Context &context, const std::optional<QString> &secret,
                                const QStringList &names)
{
    auto settings = context.valueOf(
        client::changeSettings(context.greeting().settings, context.arguments().positionals, names));
    if (secret)
        settings.smtpPass = *secret;
    return settings;
}

void showSettings(Context &context)
{
    const auto settings = context.greeting().settings;
    context.show(
        client::documents::settings(settings),
        render::tableLines(client::settingColumns(settings), client::settingsTable(), context.style()));
}

void setSettings(Context &context)
{
    const auto secret = readSecret(context, QStringLiteral("Mail password: "));
    if (context.arguments().positionals.isEmpty() && !secret)
        context.refuse(QStringLiteral("no setting is named; see halvexctl settings set --help"));
    const auto settings = changedSettings(context, secret, {});
    (void)context.ask(requests::setSettings(settings));
    if (context.wantsJson())
        context.output().print(QJsonDocument(client::documents::settings(settings)));
    else
        context.output().note(QStringLiteral("the service uses these settings now (one that is not installed "
                                             "forgets them when it ends)"));
}

QStringList transcriptLines(const QString &text)
{
    QStringList lines;
    for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        lines.append(client::visible(line.trimmed()));
    return lines;
}

QJsonObject mailDocument(const client::MailOutcome &outcome, const QStringList &lines, bool showsDialogue)
{
    QJsonObject object{{QStringLiteral("sent"), outcome.isSent}};
    if (!outcome.isSent)
        object.insert(QStringLiteral("error"), lines.value(0));
    if (showsDialogue)
        object.insert(QStringLiteral("dialogue"), QJsonArray::fromStringList(lines));
    return object;
}

/// Prints the outcome. The dialogue holds user name and password in Base64 and is printed only on request.
void report(Context &context, const client::MailOutcome &outcome)
{
    const bool showsDialogue = context.arguments().has(QStringLiteral("dialogue"));
    const QStringList lines = transcriptLines(outcome.text);
    if (context.wantsJson())
        context.output().print(QJsonDocument(mailDocument(outcome, lines, showsDialogue)));
    else if (showsDialogue)
        context.output().print(outcome.isSent ? lines : QStringList(lines.mid(1)));
    if (outcome.isSent) {
        if (!context.wantsJson())
            context.output().print(QStringLiteral("the mail server accepted the mail"));
        return;
    }
    const bool hasReply = lines.size() > 1 && !showsDialogue;
    const QString last = hasReply ? QStringLiteral(" Its last line: ") + lines.last() : QString();
    throw CommandFailure{kExitUsage, context.wantsJson() ? QString() : lines.value(0) + last};
}

void testMail(Context &context)
{
    const auto secret = readSecret(context, QStringLiteral("Mail password: "));
    const QString body = context.arguments()
                             .value(QStringLiteral("body"))
                             .value_or(QStringLiteral("Test mail of the Halvex Service."));
    if (!client::isPlainField(body))
        context.refuse(QStringLiteral("the body contains characters that the protocol cannot carry"));
    const auto settings = changedSettings(context, secret, mailSettingNames());
    if (settings.smtpServer.isEmpty() || settings.smtpTo.isEmpty())
        context.refuse(QStringLiteral("smtpServer and smtpTo must be set to send a mail"));
    const auto outcome = context.tryAsk(requests::testMail(settings, body));
    if (!outcome && outcome.failure().kind == client::FailureKind::Refused)
        context.refuse(QStringLiteral("the service is busy with another mail"));
    report(context, context.valueOf(outcome));
}

qint32 intervalArgument(const Context &context, int position)
{
    const QString text = context.arguments().positionals.value(position);
    const auto interval = client::parseInterval(text);
    if (!interval || *interval < kShortestInterval || *interval > kLongestInterval)
        context.refuse(
            QStringLiteral("intervals takes two times from 1s to 100h: for drives and for volumes"));
    return qint32(*interval);
}

void intervals(Context &context)
{
    const bool isChange = !context.arguments().positionals.isEmpty();
    const auto intervals =
        isChange
            ? context.ask(requests::setIntervals(intervalArgument(context, 0), intervalArgument(context, 1)))
            : context.ask(requests::version()).intervals;
    context.show({{QStringLiteral("smartPollIntervalMs"), intervals.smart},
                  {QStringLiteral("freeSpacePollIntervalMs"), intervals.freeSpace}},
                 QStringLiteral("drives every %1, volumes every %2")
                     .arg(client::durationText(intervals.smart / 1000),
                          client::durationText(intervals.freeSpace / 1000)));
}

/// Adds the names and ranges of the settings to the help and the completion of a command.
Command withNames(Command command, bool (*isAccepted)(const Setting &))
{
    for (const Setting &setting : client::settingsTable()) {
        if (!isAccepted(setting))
            continue;
        command.words.append(setting.name + QLatin1Char('='));
        const bool isText = setting.kind == Setting::Kind::Text || setting.kind == Setting::Kind::Secret;
        const QString range = isText ? QString() : QStringLiteral("; ") + setting.range();
        command.terms.append({setting.name, setting.help + range});
    }
    return command;
}

} // namespace

QVector<Command> settingsCommands()
{
    const Option passwordFile = passwordFileOption();
    const Option askPassword = option("ask-password", "", "Ask for the password at the terminal.");
    return {
        command("settings show", "", 0, 0, showSettings, "Show the settings of the service."),
        withNames(
            command("settings set", "NAME=VALUE...", 0, -1, setSettings,
                    "Change settings and keep all others.",
                    "Intervals have a unit, such as 90s, 3m or 1h. The mail password is not accepted on "
                    "the command line, except for smtpPass=, which removes it.",
                    {passwordFile, askPassword}),
            [](const Setting &) { return true; }),
        withNames(
            command(
                "mail-test", "[NAME=VALUE...]", 0, -1, testMail, "Send a test mail from the service.",
                "The mail uses the service's mail settings. Settings on the command line apply to this "
                "mail only.",
                {option("body", "TEXT", "The text of the mail."),
                 option("dialogue", "", "Print the dialogue with the mail server, with the login in Base64."),
                 passwordFile, askPassword}),
            isMailSetting),
        command(
            "intervals", "[DRIVES VOLUMES]", 0, 2, intervals,
            "Show or set the intervals at which drives and volumes are read.",
            "For example 'intervals 3m 5m'. They are used from the next detection until the service ends; "
            "settings set stores them."),
    };
}
