// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/alerts.h"
#include "console/context.h"
#include "console/help.h"
#include "wire/service_key_table.h"

namespace {

namespace requests = client::requests;

const QStringList kKinds{QStringLiteral("temperature"), QStringLiteral("attribute"), QStringLiteral("growth"),
                         QStringLiteral("unreadable")};

/// A drive's name may be any text: only what would change the request is refused.
QString driveName(Context &context)
{
    QString name = context.arguments().positionals.value(0);
    if (!client::isPlainField(name))
        context.refuse(
            QStringLiteral("the serial number contains characters that the protocol cannot carry"));
    return name;
}

void alerts(Context &context)
{
    const auto alerts = context.valueOf(client::alertsOf(context.tryAsk(requests::alerts())));
    if (context.wantsJson()) {
        context.output().print(QJsonDocument(alerts.document));
        return;
    }
    if (!alerts.isSupported)
        context.refuse(QStringLiteral("the service does not report alarms"));
    context.showText(client::findingColumns(), alerts.findings, QStringLiteral("there are no findings"));
    context.output().print(QString());
    context.showText(client::channelColumns(), alerts.channels, {});
}

void acknowledge(Context &context)
{
    const QStringList &words = context.arguments().positionals;
    const QString kind = words.value(1);
    if (!kind.isEmpty() && !kKinds.contains(kind))
        context.refuse(QStringLiteral("'%1' is not a kind of finding").arg(client::visible(kind)));
    bool isNumber = true;
    if (!words.value(2).isEmpty())
        words.value(2).toUInt(&isNumber);
    if (!isNumber)
        context.refuse(QStringLiteral("'%1' is not an attribute ID").arg(client::visible(words.value(2))));
    const int count = context.ask(requests::acknowledge(driveName(context), kind, words.value(2)));
    context.show({{QStringLiteral("acknowledged"), count}},
                 QStringLiteral("findings acknowledged: %1").arg(count));
}

void forget(Context &context)
{
    (void)context.ask(requests::forget(driveName(context)));
    context.confirm(QStringLiteral("the drive is forgotten"));
}

void testAlerts(Context &context)
{
    const QVector<QJsonObject> outcomes = context.ask(requests::testAlerts());
    context.showTable(client::alertTestColumns(), outcomes, QStringLiteral("no channel is on"));
    for (const QJsonObject &outcome : outcomes) {
        if (!outcome.value(QStringLiteral("ok")).toBool())
            throw CommandFailure{kExitUsage, {}};
    }
}

QString typeText(const ServiceKeyRow &row)
{
    if (row.type == ServiceKeyRow::Type::Text)
        return QStringLiteral("text");
    return QStringLiteral("number from %1 to %2").arg(row.lowest).arg(row.highest);
}

const client::Columns<ServiceKeyRow> &optionColumns()
{
    using client::column;
    using client::Layout;
    using Row = ServiceKeyRow;
    static const client::Columns<Row> kColumns{
        column<Row>("name", "Option", Layout::Left, [](const Row &row) { return QJsonValue(row.name); }),
        column<Row>("type", "Type", Layout::Left, [](const Row &row) { return QJsonValue(typeText(row)); }),
        column<Row>("default", "Default", Layout::Left,
                    [](const Row &row) { return QJsonValue(row.defaultText); }),
        column<Row>("help", "Meaning", Layout::Shrinking,
                    [](const Row &row) { return QJsonValue(row.help); }),
    };
    return kColumns;
}

QVector<Term> optionTerms()
{
    QVector<Term> terms;
    for (const ServiceKeyRow &row : serviceKeyTable())
        terms << Term{QStringLiteral("%1: %2, default %3").arg(row.name, typeText(row), row.defaultText),
                      row.help};
    return terms;
}

/// The explanations are too long for a table on a screen of 80 columns.
void options(Context &context)
{
    if (context.wantsJson() || context.arguments().has(QStringLiteral("csv")))
        context.showTable(optionColumns(), serviceKeyTable(), {});
    else
        context.output().print(help::explanations(optionTerms()));
}

} // namespace

QVector<Command> alertCommands()
{
    Command acknowledging = command(
        "acknowledge", "SERIAL [KIND [ID]]", 1, 3, acknowledge, "Silence findings until they become worse.",
        "Without KIND and ID, all findings of the drive. SERIAL may be MODEL/SERIAL.");
    acknowledging.words = kKinds;
    Command explaining =
        command("options", "", 0, 0, options, "Explain the values of the service's key.",
                "They are set in the key and read when the service starts. No service is asked.");
    explaining.terms = optionTerms();
    return {
        command("alerts", "", 0, 0, alerts, "Show findings and alert channels.",
                "Findings are kept with the option AlertPolicy changes of the service's key."),
        acknowledging,
        command("forget", "SERIAL", 1, 1, forget, "Forget a drive that was removed on purpose."),
        command("alert-test", "", 0, 0, testAlerts, "Send a test through every alert channel that is on."),
        explaining,
    };
}
