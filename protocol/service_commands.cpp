// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/commands.h"

#include "config/mail_protection.h"
#include "config/user_accounts.h"
#include "protocol/command_target.h"
#include "protocol/greeting.h"
#include "protocol/reply_texts.h"

#include <QDateTime>
#include <QHostInfo>
#include <QTimeZone>

namespace command {

Reply authenticate(const request::Credentials &credentials, const Context &context)
{
    return shortReply(
        "AUTH", {checkUser(credentials.user, credentials.password),
                 context.peer.name + QLatin1Char('.') + QString::number(QDateTime::currentSecsSinceEpoch())});
}

/// Sends nothing, so that its sender need not read a reply.
Reply keepAlive(const request::None & /*none*/, const Context & /*context*/)
{
    return {};
}

Reply disconnect(const request::None & /*none*/, const Context & /*context*/)
{
    return QStringLiteral("DISCONNECTED");
}

Reply version(const request::None & /*none*/, const Context &context)
{
    return versionReply(context.target.settings(), QHostInfo::localHostName());
}

Reply time(const request::None & /*none*/, const Context & /*context*/)
{
    const QDateTime now = QDateTime::currentDateTime();
    return listReply("X-TIME_OK", QStringList{QString::number(now.toSecsSinceEpoch()),
                                              QString::number(now.offsetFromUtc()),
                                              QString::fromLatin1(QTimeZone::systemTimeZoneId())}
                                      .join(kRequestSeparator));
}

Reply setPollIntervals(const std::optional<PollIntervals> &intervals, const Context &context)
{
    if (intervals)
        context.target.setPollIntervals(*intervals);
    const Settings &settings = context.target.settings();
    return shortReply(
        intervals ? "SETTIME_OK" : "SETTIME_ERR",
        {QString::number(settings.smartPollInterval), QString::number(settings.freeSpacePollInterval)});
}

/// A list that is too short changes nothing and is confirmed all the same.
Reply changeSettings(const std::optional<ServiceSettings> &change, const Context &context)
{
    CommandTarget &target = context.target;
    if (change && target.options().protectMail)
        target.changeSettings(withMailProtected(*change, target.settings(), context.peer.isLocal()));
    else if (change)
        target.changeSettings(*change);
    return QStringLiteral("SET_OK");
}

/// The reply word is the same for success and failure: consoles look at the text after it.
Reply testMail(const std::optional<MailTest> &test, const Context &context)
{
    if (!test)
        return kUnknownCommand;
    return Reply::later([&target = context.target, test](const Respond &respond) {
        const auto finished = [respond](const QString &outcome) {
            respond(std::make_unique<ReplySource>(listReply("SMTPTEST_OK", outcome)));
        };
        if (!target.startMailTest(*test, finished))
            respond(std::make_unique<ReplySource>(kUnknownCommand));
    });
}

Reply checkPassword(const request::Credentials &credentials, const Context & /*context*/)
{
    return shortReply("CHECKPASS", {checkUser(credentials.user, credentials.password)});
}

} // namespace command
