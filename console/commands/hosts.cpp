// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/survey.h"
#include "console/commands/command.h"
#include "console/commands/json.h"
#include "console/render/level.h"
#include "console/render/table.h"

#include <QFile>

#include <algorithm>

namespace {

using client::SurveyAnswer;

/// The hosts in `file`, one HOST or HOST:PORT a line; "#" begins a comment. The error when it has none.
struct HostsFile
{
    QVector<client::Endpoint> endpoints;
    QString error;
};

HostsFile readHostsFile(const QString &name)
{
    HostsFile hosts;
    QFile file(name);
    if (!file.open(QIODevice::ReadOnly)) {
        hosts.error = QStringLiteral("%1: %2").arg(name, file.errorString());
        return hosts;
    }
    int lineNumber = 0;
    while (!file.atEnd()) {
        ++lineNumber;
        const QString line = QString::fromUtf8(file.readLine()).section(QLatin1Char('#'), 0, 0).trimmed();
        if (line.isEmpty())
            continue;
        const auto endpoint = client::parseEndpoint(line);
        if (!endpoint) {
            hosts.error =
                QStringLiteral("%1:%2: '%3' is no HOST or HOST:PORT").arg(name).arg(lineNumber).arg(line);
            return hosts;
        }
        hosts.endpoints.append(*endpoint);
    }
    if (hosts.endpoints.isEmpty())
        hosts.error = QStringLiteral("%1 names no host").arg(name);
    return hosts;
}

/// The highest temperature of any drive; nothing when none reports one.
std::optional<qint32> hottest(const QVector<client::Drive> &drives)
{
    std::optional<qint32> highest;
    for (const client::Drive &drive : drives) {
        if (drive.hasTemperature)
            highest = std::max(highest.value_or(drive.temperature), drive.temperature);
    }
    return highest;
}

/// The drives above level fine, by number.
QString troubled(const QVector<client::Drive> &drives)
{
    QStringList texts;
    for (int i = 0; i < drives.size(); ++i) {
        if (drives.at(i).isRated() && drives.at(i).statusLevel > 1)
            texts.append(QStringLiteral("%1 %2").arg(i).arg(client::visible(drives.at(i).model)));
    }
    return texts.join(QStringLiteral(", "));
}

QStringList hostTable(const QVector<SurveyAnswer> &answers, const render::Style &style)
{
    using render::Align;
    constexpr auto kShrink = render::Table::Shrink::Yes;
    render::Table table;
    table.addColumn(QStringLiteral("Asked at"), Align::Left, kShrink);
    table.addColumn(QStringLiteral("Host"), Align::Left, kShrink);
    table.addColumn(QStringLiteral("Level"));
    table.addColumn(QStringLiteral("Drives"), Align::Right);
    table.addColumn(QStringLiteral("Hottest"), Align::Right);
    table.addColumn(QStringLiteral("Remarks"), Align::Left, kShrink);
    for (const SurveyAnswer &answer : answers) {
        if (!answer.isComplete()) {
            table.addRow({{displayName(answer.endpoint)},
                          {QStringLiteral("-")},
                          {QStringLiteral("no answer"), render::Colour::Bad},
                          {},
                          {},
                          {answer.failure.text.section(QLatin1Char(':'), 0, 0)}});
            continue;
        }
        const qint32 level = answer.greeting->alertLevel;
        const auto highest = hottest(*answer.drives);
        table.addRow({{displayName(answer.endpoint)},
                      {client::visible(answer.greeting->hostName)},
                      {render::levelText(level), render::levelColour(level)},
                      {QString::number(answer.drives->size())},
                      {highest ? QStringLiteral("%1 °C").arg(*highest) : QStringLiteral("-")},
                      {troubled(*answer.drives)}});
    }
    return table.lines(style);
}

QJsonArray hostArray(const QVector<SurveyAnswer> &answers)
{
    QJsonArray array;
    for (const SurveyAnswer &answer : answers) {
        QJsonObject object{{QStringLiteral("endpoint"), displayName(answer.endpoint)},
                           {QStringLiteral("answered"), answer.isComplete()}};
        if (answer.isComplete()) {
            object.insert(QStringLiteral("service"), json::service(*answer.greeting));
            object.insert(QStringLiteral("drives"), json::drives(*answer.drives));
        } else {
            object.insert(QStringLiteral("error"), answer.failure.text);
        }
        array.append(object);
    }
    return array;
}

} // namespace

int runHosts(Context &context)
{
    QVector<client::Endpoint> endpoints = context.arguments().endpoints;
    if (const auto name = context.arguments().value(QStringLiteral("hosts-file"))) {
        const HostsFile hosts = readHostsFile(*name);
        if (!hosts.error.isEmpty())
            return context.refuse(hosts.error);
        const bool hasOthers = context.arguments().has(QStringLiteral("host"));
        endpoints = hasOthers ? endpoints + hosts.endpoints : hosts.endpoints;
    }
    const auto answers = client::askAll(endpoints, context.arguments().timeout);
    if (context.wantsJson())
        context.output().print(QJsonDocument(hostArray(answers)));
    else
        context.output().print(hostTable(answers, context.style()));
    const bool haveAllAnswered =
        std::all_of(answers.cbegin(), answers.cend(), [](const SurveyAnswer &a) { return a.isComplete(); });
    return haveAllAnswered ? kExitFine : kExitNoAnswer;
}
