// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"
#include "client/units.h"
#include "console/context.h"
#include "console/help.h"
#include "console/secret.h"

namespace {

namespace requests = client::requests;

void detect(Context &context)
{
    (void)context.ask(requests::detect());
    if (!context.arguments().wait) {
        context.confirm(QStringLiteral("the service detects its drives again"));
        return;
    }
    context.disconnect(); // --wait applies to a new connection
    const qint32 count = context.ask(requests::driveCount());
    context.show({{QStringLiteral("drives"), count}}, QString::number(count));
}

void refresh(Context &context)
{
    (void)context.ask(requests::refresh());
    context.confirm(QStringLiteral("drives and volumes have been read"));
}

void users(Context &context)
{
    const qint32 count = context.ask(requests::userCount());
    QVector<client::UserAccount> users;
    for (qint32 i = 0; i < count; ++i) {
        const auto user = context.ask(requests::user(i));
        if (user.name.isEmpty()) // an account was removed after the count
            break;
        users.append(user);
    }
    context.showTable(client::userColumns(), users, QStringLiteral("there are no accounts"));
}

void login(Context &context)
{
    const QString user = context.arguments().positionals.first();
    const auto secret = readSecret(context, QStringLiteral("Password of %1: ").arg(user), true);
    if (!client::isPlainField(user))
        context.refuse(QStringLiteral("the name contains characters that the protocol cannot carry"));
    const auto rights = context.ask(requests::authenticate(user, *secret));
    const QDateTime time = rights.peerAndTime.time;
    if (!context.wantsJson()) {
        context.output().print(QStringLiteral("rights %1 at %2").arg(rights.rights, client::timeText(time)));
        return;
    }
    context.output().print(QJsonDocument(
        QJsonObject{{QStringLiteral("rights"), rights.rights},
                    {QStringLiteral("peer"), rights.peerAndTime.peer},
                    {QStringLiteral("time"), client::isoTime(time.toTimeZone(context.zone()))}}));
}

void raw(Context &context)
{
    const auto request = requests::raw(context.arguments().positionals.first());
    const QString reply = context.ask(request);
    if (request.hasReply)
        context.show({{QStringLiteral("reply"), reply}}, client::visible(reply));
}

void completion(Context &context)
{
    context.output().print(help::bashCompletion());
}

void man(Context &context)
{
    context.output().print(help::manPage());
}

} // namespace

QVector<Command> serviceCommands()
{
    return {
        command(
            "detect", "", 0, 0, detect, "Start a new detection of the drives.",
            "This ends surface scans. With --wait, wait for the end of the detection and print the number "
            "of drives."),
        command("refresh", "", 0, 0, refresh, "Read drives and volumes now."),
        command("users", "", 0, 0, users, "Show the user accounts of the service's machine."),
        command("login", "USER", 1, 1, login, "Show the rights that the service grants to a user.",
                "The terminal is asked for the password.", {passwordFileOption()}),
        command("raw", "LINE", 1, 1, raw, "Send LINE unchanged and print the reply.",
                "For users who know the protocol. Control characters in the reply are written as \\u{...}."),
        command("completion", "", 0, 0, completion, "Print a completion script for bash.",
                "To use it in this shell: source <(halvexctl completion)"),
        command("man", "", 0, 0, man, "Print the manual page.", "To read it: halvexctl man | man -l -"),
    };
}
