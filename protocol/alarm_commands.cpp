// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/command_target.h"
#include "protocol/commands.h"
#include "protocol/reply_texts.h"

#include <QJsonDocument>

namespace command {

namespace {

QString jsonReply(const char *word, const QJsonDocument &document)
{
    return listReply(word, QString::fromUtf8(document.toJson(QJsonDocument::Compact)));
}

/// Returns "WORD_ERR,REASON".
QString errorReply(const QString &word, const QString &reason)
{
    return word + QStringLiteral("_ERR,") + reason;
}

/// Returns whether the console may change the alarms' memory: a local one, or any if the option allows it.
bool mayManageAlarms(const Context &context)
{
    const Peer &peer = context.peer;
    return peer.isLocal() || peer.address.isLoopback() || context.target.options().remoteAcknowledge;
}

QString notAllowed()
{
    return QStringLiteral(
        "only consoles of the service's machine may do this, unless RemoteAcknowledge is 1");
}

} // namespace

Reply alerts(const request::None & /*none*/, const Context &context)
{
    return jsonReply("X-ALERTS_OK", QJsonDocument(context.target.alerts()));
}

Reply acknowledge(const FindingName &finding, const Context &context)
{
    const QString word = QStringLiteral("X-ACK");
    if (!mayManageAlarms(context))
        return errorReply(word, notAllowed());
    const Result<int> count = context.target.acknowledgeFindings(finding);
    return count ? word + QStringLiteral("_OK,") + QString::number(*count)
                 : errorReply(word, count.failure().text);
}

Reply forgetDrive(const QString &drive, const Context &context)
{
    const QString word = QStringLiteral("X-FORGET");
    if (!mayManageAlarms(context))
        return errorReply(word, notAllowed());
    const Result<void> result = context.target.forgetDrive(drive);
    return result ? word + QStringLiteral("_OK") : errorReply(word, result.failure().text);
}

Reply testAlarms(const request::None & /*none*/, const Context &context)
{
    const QString word = QStringLiteral("X-ALERTTEST");
    if (!mayManageAlarms(context))
        return errorReply(word, notAllowed());
    return Reply::later([&target = context.target, word](const Respond &respond) {
        target.testAlarms([respond, word](const Result<QJsonArray> &outcomes) {
            respond(std::make_unique<ReplySource>(outcomes
                                                      ? jsonReply("X-ALERTTEST_OK", QJsonDocument(*outcomes))
                                                      : errorReply(word, outcomes.failure().text)));
        });
    });
}

} // namespace command
