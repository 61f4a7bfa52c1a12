// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/alerts.h"

#include "client/failure.h"
#include "client/field_reader.h"
#include "client/units.h"
#include "wire/separators.h"

#include <QJsonDocument>

namespace client {

namespace {

/// A mail server, a webhook and a program in turn.
constexpr std::chrono::minutes kTestAllowance{5};

bool isUnknownCommand(const QString &reply)
{
    return reply.startsWith(QLatin1String("UNKNOWN COMMAND"));
}

QVector<QJsonObject> objects(const QJsonValue &array)
{
    QVector<QJsonObject> result;
    for (const QJsonValue &value : array.toArray())
        result.append(value.toObject());
    return result;
}

std::optional<Alerts> parseAlerts(const QString &reply)
{
    if (isUnknownCommand(reply))
        return Alerts{{{QStringLiteral("supported"), false}}, {}, {}};
    const auto json = afterPrefix(reply, QStringLiteral("X-ALERTS_OK") + kRequestSeparator);
    const QJsonObject document = QJsonDocument::fromJson(json.value_or(QString()).toUtf8()).object();
    Alerts alerts{document, objects(document.value(QStringLiteral("findings"))),
                  objects(document.value(QStringLiteral("channels")))};
    return alerts.isSupported() ? std::optional<Alerts>(alerts) : std::nullopt;
}

/// Parses "WORD_ERR,REASON" and the reply of a service without the command; nullopt for any other reply.
template <typename T>
std::optional<Answer<T>> parseRefusal(const QString &word, const QString &reply)
{
    if (isUnknownCommand(reply))
        return Answer<T>{std::nullopt, QStringLiteral("the service does not know this command")};
    if (const auto reason = afterPrefix(reply, word + QStringLiteral("_ERR,")))
        return Answer<T>{std::nullopt, visible(*reason)};
    return std::nullopt;
}

QString textOf(const QJsonObject &finding, const char *key)
{
    return cellOf(finding.value(QLatin1String(key))).text;
}

/// Returns the numbers of a finding in words: "57 °C (limit 55)". What matters comes first, because a narrow
/// screen cuts the end.
QString detailOf(const QJsonObject &finding)
{
    const QString kind = finding.value(QStringLiteral("kind")).toString();
    if (kind == QLatin1String("temperature"))
        return QStringLiteral("%1 °C (limit %2)").arg(textOf(finding, "value"), textOf(finding, "limit"));
    if (kind == QLatin1String("attribute"))
        return QStringLiteral("%1 at %2 (threshold %3): %4")
            .arg(textOf(finding, "id"), textOf(finding, "value"), textOf(finding, "threshold"),
                 textOf(finding, "name"));
    if (kind == QLatin1String("growth"))
        return QStringLiteral("%1 from %2 to %3: %4")
            .arg(textOf(finding, "id"), textOf(finding, "baseline"), textOf(finding, "raw"),
                 textOf(finding, "name"));
    return QStringLiteral("not readable");
}

Column<QJsonObject> member(const char *key, const char *heading, Layout layout = Layout::Left)
{
    const QString name = QString::fromUtf8(key);
    return column<QJsonObject>(key, heading, layout,
                               [name](const QJsonObject &row) { return row.value(name); });
}

Column<QJsonObject> timeMember(const char *key, const char *heading)
{
    Column<QJsonObject> result = member(key, heading);
    const QString name = result.key;
    result.cell = [name](const QJsonObject &row) {
        return Cell{timeText(QDateTime::fromString(row.value(name).toString(), Qt::ISODate).toLocalTime())};
    };
    return result;
}

Cell severityCell(const QJsonObject &finding)
{
    if (finding.value(QStringLiteral("acknowledged")).toBool())
        return {QStringLiteral("acknowledged"), Tone::Dim};
    Cell cell = cellOf(finding.value(QStringLiteral("severity")));
    cell.tone = cell.text == QLatin1String("critical") ? Tone::Bad : Tone::Warning;
    return cell;
}

Cell okCell(const QJsonObject &outcome)
{
    const bool isOk = outcome.value(QStringLiteral("ok")).toBool();
    return isOk ? Cell{QStringLiteral("ok"), Tone::Good} : Cell{QStringLiteral("failed"), Tone::Bad};
}

} // namespace

namespace requests {

Request<Alerts> alerts()
{
    return {QStringLiteral("X-ALERTS"), parseAlerts};
}

Request<Answer<int>> acknowledge(const QString &drive, const QString &kind, const QString &id)
{
    const QString word = QStringLiteral("X-ACK");
    const auto parse = [word](const QString &reply) -> std::optional<Answer<int>> {
        const auto count = afterPrefix(reply, word + QStringLiteral("_OK,"));
        const auto number = count ? strictNumber<qint32>(*count) : std::nullopt;
        return number ? Answer<int>{*number, {}} : parseRefusal<int>(word, reply);
    };
    return {QStringList{word, drive, kind, id}.join(kRequestSeparator), parse};
}

Request<Answer<bool>> forget(const QString &drive)
{
    const QString word = QStringLiteral("X-FORGET");
    const auto parse = [word](const QString &reply) -> std::optional<Answer<bool>> {
        return reply == word + QStringLiteral("_OK") ? Answer<bool>{true, {}}
                                                     : parseRefusal<bool>(word, reply);
    };
    return {word + kRequestSeparator + drive, parse};
}

Request<Answer<QVector<QJsonObject>>> testAlerts()
{
    using Outcomes = QVector<QJsonObject>;
    const QString word = QStringLiteral("X-ALERTTEST");
    const auto parse = [word](const QString &reply) -> std::optional<Answer<Outcomes>> {
        const auto json = afterPrefix(reply, word + QStringLiteral("_OK") + kRequestSeparator);
        if (!json)
            return parseRefusal<Outcomes>(word, reply);
        const QJsonDocument document = QJsonDocument::fromJson(json->toUtf8());
        return document.isArray() ? std::optional<Answer<Outcomes>>({objects(document.array()), {}})
                                  : std::nullopt;
    };
    return {word, parse, kTestAllowance};
}

} // namespace requests

const Columns<QJsonObject> &findingColumns()
{
    static const Columns<QJsonObject> kColumns{
        member("number", "Drive", Layout::Right),
        member("serial", "Serial"),
        column<QJsonObject>(
            "severity", "State", Layout::Left,
            [](const QJsonObject &row) { return row.value(QStringLiteral("severity")); }, severityCell),
        column<QJsonObject>(
            "kind", "Finding", Layout::Shrinking,
            [](const QJsonObject &row) { return row.value(QStringLiteral("kind")); },
            [](const QJsonObject &row) { return Cell{detailOf(row)}; }),
        timeMember("since", "Since"),
    };
    return kColumns;
}

const Columns<QJsonObject> &channelColumns()
{
    static const Columns<QJsonObject> kColumns{
        member("name", "Channel"),
        member("on", "On"),
        member("pending", "Pending", Layout::Right),
        timeMember("lastSuccess", "Last success"),
        timeMember("lastFailure", "Last failure"),
        member("reason", "Reason", Layout::Shrinking),
    };
    return kColumns;
}

const Columns<QJsonObject> &alertTestColumns()
{
    static const Columns<QJsonObject> kColumns{
        member("name", "Channel"),
        column<QJsonObject>(
            "ok", "Result", Layout::Left,
            [](const QJsonObject &row) { return row.value(QStringLiteral("ok")); }, okCell),
        member("reason", "Reason", Layout::Shrinking),
    };
    return kColumns;
}

} // namespace client
