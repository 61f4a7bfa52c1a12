// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"
#include "client/documents.h"
#include "console/context.h"

#include <QEventLoop>
#include <QFile>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

using client::Cell;
using client::Drive;
using client::FailureKind;
using client::Level;
using client::Tone;
using Drives = QVector<Drive>;

/// The reply of one service.
struct HostAnswer
{
    client::Endpoint endpoint;
    client::Greeting greeting; ///< without a meaning if the drives are missing
    client::Result<Drives> drives = Drives();
};

/// Reads one HOST or HOST:PORT per line; "#" begins a comment.
QVector<client::Endpoint> readHostsFile(const Context &context, const QString &name)
{
    QVector<client::Endpoint> endpoints;
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly))
        context.refuse(QStringLiteral("%1: %2").arg(name, file.errorString()));
    for (int lineNumber = 1; !file.atEnd(); ++lineNumber) {
        const QString line = QString::fromUtf8(file.readLine()).section(QLatin1Char('#'), 0, 0).trimmed();
        if (line.isEmpty())
            continue;
        const auto endpoint = client::parseEndpoint(line);
        if (!endpoint)
            context.refuse(
                QStringLiteral("%1:%2: '%3' is not HOST or HOST:PORT").arg(name).arg(lineNumber).arg(line));
        endpoints.append(*endpoint);
    }
    if (endpoints.isEmpty())
        context.refuse(QStringLiteral("%1 contains no host").arg(name));
    return endpoints;
}

QVector<client::Endpoint> endpointsOf(const Context &context)
{
    const Arguments &arguments = context.arguments();
    const auto name = arguments.value(QStringLiteral("hosts-file"));
    if (!name)
        return arguments.endpoints;
    const auto endpoints = readHostsFile(context, *name);
    return arguments.has(QStringLiteral("host")) ? arguments.endpoints + endpoints : endpoints;
}

/// Asks all services at the same time. The answers are in the order of `endpoints`.
QVector<HostAnswer> askAll(const QVector<client::Endpoint> &endpoints, std::chrono::milliseconds timeout)
{
    QVector<HostAnswer> answers(endpoints.size());
    std::vector<std::unique_ptr<client::Conversation>> conversations;
    QEventLoop loop;
    int pending = int(endpoints.size());
    for (int i = 0; i < endpoints.size(); ++i) {
        answers[i].endpoint = endpoints.at(i);
        conversations.push_back(std::make_unique<client::Conversation>(endpoints.at(i), timeout));
        client::Conversation &conversation = *conversations.back();
        conversation.ask(client::requests::allDrives(), [&, i](const client::Result<Drives> &drives) {
            answers[i].drives = drives;
            answers[i].greeting = conversation.greeting().value_or(client::Greeting());
            conversation.close();
            if (--pending == 0)
                loop.quit();
        });
    }
    loop.exec();
    return answers;
}

Cell levelCell(const HostAnswer &answer)
{
    if (answer.drives)
        return {levelName(answer.greeting.level), levelTone(answer.greeting.level)};
    switch (answer.drives.failure().kind) {
    case FailureKind::Paused:
        return {QStringLiteral("paused"), Tone::Warning};
    case FailureKind::Detecting:
        return {QStringLiteral("detecting"), Tone::Warning};
    default:
        return {QStringLiteral("no answer"), Tone::Bad};
    }
}

/// Returns the highest temperature of any drive.
Cell highestCell(const HostAnswer &answer)
{
    std::optional<qint32> highest;
    for (const Drive &drive : answer.drives ? *answer.drives : Drives())
        highest = std::max(highest, drive.temperature);
    return highest ? Cell{QStringLiteral("%1 °C").arg(*highest)} : client::cellOf(QJsonValue());
}

/// Returns the drives above level fine, or the reason why there is no answer.
Cell remarksCell(const HostAnswer &answer)
{
    if (!answer.drives)
        return {answer.drives.failure().text.section(QLatin1Char(':'), 0, 0)};
    QStringList texts;
    for (const Drive &drive : *answer.drives) {
        if (drive.level() > Level::Fine)
            texts.append(QStringLiteral("%1 %2").arg(drive.number).arg(client::visible(drive.model)));
    }
    return {texts.join(QStringLiteral(", "))};
}

/// Returns a column of a property that only a service that answered has.
client::Column<HostAnswer> answerField(const char *key,
                                       const std::function<QJsonValue(const HostAnswer &)> &value)
{
    return client::field<HostAnswer>(key, [value](const HostAnswer &answer) {
        return answer.drives ? value(answer) : QJsonValue(QJsonValue::Undefined);
    });
}

client::Columns<HostAnswer> hostColumns(const QTimeZone &zone)
{
    using A = HostAnswer;
    using client::Layout;
    const auto host = [](const A &a) { return a.drives ? a.greeting.hostName : QJsonValue(); };
    const auto count = [](const A &a) { return a.drives ? a.drives->size() : QJsonValue(); };
    return {
        client::column<A>("endpoint", "Endpoint", Layout::Shrinking,
                          [](const A &a) { return displayName(a.endpoint); }),
        client::cells<A>("Host", Layout::Shrinking, [host](const A &a) { return client::cellOf(host(a)); }),
        client::cells<A>("Level", Layout::Left, levelCell),
        client::cells<A>("Drives", Layout::Right, [count](const A &a) { return client::cellOf(count(a)); }),
        client::cells<A>("Highest", Layout::Right, highestCell),
        client::cells<A>("Remarks", Layout::Shrinking, remarksCell),
        client::field<A>("answered", [](const A &a) { return bool(a.drives); }),
        answerField("service", [zone](const A &a) { return client::documents::service(a.greeting, zone); }),
        answerField("drives", [](const A &a) { return toArray(client::driveColumns(), *a.drives); }),
        client::field<A>("error",
                         [](const A &a) {
                             return a.drives ? QJsonValue(QJsonValue::Undefined) : a.drives.failure().text;
                         }),
    };
}

void hosts(Context &context)
{
    const auto answers = askAll(endpointsOf(context), context.arguments().timeout);
    context.showTable(hostColumns(context.zone()), answers, {});
    const bool haveAllAnswered =
        std::all_of(answers.cbegin(), answers.cend(), [](const HostAnswer &a) { return bool(a.drives); });
    if (!haveAllAnswered)
        throw CommandFailure{kExitNoAnswer, {}};
}

} // namespace

QVector<Command> hostsCommands()
{
    return {
        command(
            "hosts", "", 0, 0, hosts, "Ask several services at the same time and show them in one table.", "",
            {option("hosts-file", "FILE", "Also ask the hosts in FILE: one HOST or HOST:PORT per line.")}),
    };
}
