// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/requests.h"
#include "console/client/short_replies.h"
#include "console/commands/command.h"
#include "console/render/table.h"
#include "console/render/units.h"
#include "console/secret.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

void print(Context &context, const QVector<client::UserAccount> &users)
{
    if (context.wantsJson()) {
        QJsonArray array;
        for (const client::UserAccount &user : users)
            array.append(
                QJsonObject{{QStringLiteral("name"), user.name}, {QStringLiteral("level"), user.level}});
        context.output().print(QJsonDocument(array));
        return;
    }
    render::Table table;
    table.addColumn(QStringLiteral("User"), render::Align::Left, render::Table::Shrink::Yes);
    table.addColumn(QStringLiteral("Level"));
    for (const client::UserAccount &user : users)
        table.addRow({{client::visible(user.name)}, {user.level}});
    context.output().print(table.lines(context.style()));
}

} // namespace

int runUsers(Context &context)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto count = context.session().query(QStringLiteral("USERCOUNT"), client::parseUserCount);
    if (!count)
        return context.fail(count.failure());
    QVector<client::UserAccount> users;
    for (qint32 i = 0; i < *count; ++i) {
        const auto user = context.session().query(
            client::requests::userInfo(i), [i](const QString &reply) { return client::parseUser(reply, i); });
        if (!user)
            return context.fail(user.failure());
        if (user->name.isEmpty()) // an account was removed since they were counted
            break;
        users.append(*user);
    }
    print(context, users);
    return kExitFine;
}

int runLogin(Context &context)
{
    const QString user = context.arguments().positionals.first();
    const Secret secret =
        obtainSecret(context.arguments(), QStringLiteral("Password of %1: ").arg(user), true);
    if (!secret.error.isEmpty())
        return context.refuse(secret.error);
    if (!client::isPlainField(user))
        return context.refuse(QStringLiteral("the name holds characters that the protocol cannot carry"));
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto rights =
        context.session().query(client::requests::authenticate(user, *secret.text), client::parseRights);
    if (!rights)
        return context.fail(rights.failure());
    if (context.wantsJson())
        context.output().print(QJsonDocument(QJsonObject{
            {QStringLiteral("rights"), rights->rights},
            {QStringLiteral("peer"), rights->peerAndTime.peer},
            {QStringLiteral("time"), render::isoTime(rights->peerAndTime.time)},
        }));
    else
        context.output().print(QStringLiteral("rights %1 at %2")
                                   .arg(rights->rights, render::timeText(rights->peerAndTime.time)));
    return kExitFine;
}
