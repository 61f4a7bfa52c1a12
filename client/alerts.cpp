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

/// The service tests a mail server, a webhook and a program in turn.
constexpr std::chrono::minutes kTestAllowance{5};

QVector<QJsonObject> objects(const QJsonValue &array)
{
    QVector<QJsonObject> result;
    for (const QJsonValue &value : array.toArray())
        result.append(value.toObject());
    return result;
}

std::optional<Alerts> parseAlerts(const QString &reply)
{
    const auto json = afterPrefix(reply, QStringLiteral("X-ALERTS_OK") + kRequestSeparator);
    const QJsonObject document = QJsonDocument::fromJson(json.value_or(QString()).toUtf8()).object();
    if (!document.contains(QStringLiteral("policy")))
        return std::nullopt;
    return Alerts{document, objects(document.value(QStringLiteral("findings"))),
                  objects(document.value(QStringLiteral("channels")))};
}

std::optional<int> parseAcknowledged(const QString &reply)
{
    const auto count = afterPrefix(reply, QStringLiteral("X-ACK_OK,"));
    return count ? strictNumber<qint32>(*count) : std::nullopt;
}

std::optional<QVector<QJsonObject>> parseTest(const QString &reply)
{
    const auto json = afterPrefix(reply, QStringLiteral("X-ALERTTEST_OK") + kRequestSeparator);
    const QJsonDocument document = QJsonDocument::fromJson(json.value_or(QString()).toUtf8());
    return document.isArray() ? std::optional(objects(document.array())) : std::nullopt;
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

Column<QJsonObject> member(const char *key, const char *heading, Layout layout = Layout::Left,
                           std::function<Cell(const QJsonObject &)> cell = {})
{
    const QString name = QString::fromUtf8(key);
    return column<QJsonObject>(
        key, heading, layout, [name](const QJsonObject &row) { return row.value(name); }, std::move(cell));
}

Column<QJsonObject> timeMember(const char *key, const char *heading)
{
    const QString name = QString::fromUtf8(key);
    return member(key, heading, Layout::Left, [name](const QJsonObject &row) {
        return Cell{timeText(QDateTime::fromString(row.value(name).toString(), Qt::ISODate).toLocalTime())};
    });
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

Result<Alerts> alertsOf(const Result<Alerts> &reply)
{
    if (reply || reply.failure().kind != FailureKind::Refused)
        return reply;
    return Alerts{{{QStringLiteral("supported"), false}}, {}, {}, false};
}

namespace requests {

Request<Alerts> alerts()
{
    return {QStringLiteral("X-ALERTS"), parseAlerts};
}

Request<int> acknowledge(const QString &drive, const QString &kind, const QString &id)
{
    return {QStringList{QStringLiteral("X-ACK"), drive, kind, id}.join(kRequestSeparator), parseAcknowledged};
}

Done forget(const QString &drive)
{
    const auto parse = [](const QString &reply) {
        return reply == QLatin1String("X-FORGET_OK") ? std::optional(reply) : std::nullopt;
    };
    return {QStringLiteral("X-FORGET") + kRequestSeparator + drive, parse};
}

Request<QVector<QJsonObject>> testAlerts()
{
    return {QStringLiteral("X-ALERTTEST"), parseTest, kTestAllowance};
}

} // namespace requests

const Columns<QJsonObject> &findingColumns()
{
    static const Columns<QJsonObject> kColumns{
        member("number", "Drive", Layout::Right),
        member("serial", "Serial"),
        member("severity", "State", Layout::Left, severityCell),
        member("kind", "Finding", Layout::Shrinking,
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
        member("ok", "Result", Layout::Left, okCell),
        member("reason", "Reason", Layout::Shrinking),
    };
    return kColumns;
}

} // namespace client
