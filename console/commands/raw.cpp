// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/failure.h"
#include "console/commands/command.h"

#include <QJsonObject>

namespace {

/// The one request that is never answered, unless the service is busy.
bool isAnswered(const QString &line)
{
    return line.section(QStringLiteral("]!["), 0, 0) != QLatin1String("BLABLA");
}

} // namespace

int runRaw(Context &context)
{
    const QString line = context.arguments().positionals.first();
    // A busy service answers some lines all the same, so what it says first is of no matter here.
    if (context.arguments().wait) {
        const auto greeting = context.greet();
        if (!greeting)
            return context.fail(greeting.failure());
    } else if (const auto first = context.session().connectToService(); !first) {
        return context.fail(first.failure());
    }
    if (!isAnswered(line)) {
        context.session().tell(line);
        return kExitFine;
    }
    const auto reply = context.session().ask(line);
    if (!reply)
        return context.fail(reply.failure());
    if (context.wantsJson())
        context.output().print(QJsonDocument(QJsonObject{{QStringLiteral("reply"), *reply}}));
    else
        context.output().print(client::visible(*reply));
    return kExitFine;
}
