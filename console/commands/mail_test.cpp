// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/requests.h"
#include "console/client/short_replies.h"
#include "console/commands/command.h"
#include "console/secret.h"
#include "console/settings_table.h"

#include <QJsonArray>
#include <QJsonObject>

namespace {

using namespace std::chrono_literals;

/// The service gives a mail server 30 s to take the connection, and no limit for what follows.
constexpr auto kMailPatience = 60s;

QStringList transcriptLines(const QString &text)
{
    QStringList lines;
    for (const QString &line : text.split(QLatin1Char('\n'), Qt::SkipEmptyParts))
        lines.append(client::visible(line.trimmed()));
    return lines;
}

void report(Context &context, const client::MailOutcome &outcome)
{
    // The dialogue holds user name and password in Base64, so it is shown only when asked for.
    const bool showsDialogue = context.arguments().has(QStringLiteral("dialogue"));
    const QStringList lines = transcriptLines(outcome.text);
    Output &output = context.output();
    if (context.wantsJson()) {
        QJsonObject object{{QStringLiteral("sent"), outcome.isSent}};
        if (!outcome.isSent)
            object.insert(QStringLiteral("error"), lines.value(0));
        if (showsDialogue)
            object.insert(QStringLiteral("dialogue"), QJsonArray::fromStringList(lines));
        output.print(QJsonDocument(object));
        return;
    }
    if (showsDialogue)
        output.print(lines);
    if (outcome.isSent)
        output.print(QStringLiteral("the mail server has taken the mail"));
    else if (lines.size() > 1)
        output.complain(lines.first() + QStringLiteral(" It said last: ") + lines.last());
    else
        output.complain(lines.value(0));
}

} // namespace

int runMailTest(Context &context)
{
    const Secret secret = obtainSecret(context.arguments(), QStringLiteral("Mail password: "));
    if (!secret.error.isEmpty())
        return context.refuse(secret.error);
    const QString body = context.arguments()
                             .value(QStringLiteral("body"))
                             .value_or(QStringLiteral("Test mail of the Halvex Service."));
    if (!client::isPlainField(body))
        return context.refuse(QStringLiteral("the body holds characters that the protocol cannot carry"));
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    MergedSettings merged = mergeSettings(greeting->settings, context.arguments().positionals);
    if (!merged.error.isEmpty())
        return context.refuse(merged.error);
    if (merged.settings.smtpServer.isEmpty() || merged.settings.smtpTo.isEmpty())
        return context.refuse(QStringLiteral("smtpServer and smtpTo have to be set for a mail to be sent"));
    if (secret.text)
        merged.settings.smtpPass = *secret.text;

    const auto outcome = context.session().query(client::requests::testMail(merged.settings, body),
                                                 client::parseMailOutcome, context.patience(kMailPatience));
    if (!outcome) {
        if (outcome.failure().kind == client::FailureKind::Refused)
            return context.refuse(QStringLiteral("the service is busy with another mail"));
        return context.fail(outcome.failure());
    }
    report(context, *outcome);
    return outcome->isSent ? kExitFine : kExitUsage;
}
