// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/requests.h"
#include "console/commands/command.h"
#include "console/commands/json.h"
#include "console/render/table.h"
#include "disk/attribute_catalogue.h"

namespace {

QString kindText(const client::Attribute &attribute)
{
    if (attribute.isFailing())
        return QStringLiteral("FAILING"); // only those that foretell a failure ever are
    return attribute.isPrefailure ? QStringLiteral("pre-failure") : QStringLiteral("advisory");
}

QStringList attributeTable(const QVector<client::Attribute> &attributes, const render::Style &style)
{
    using render::Align;
    render::Table table;
    table.addColumn(QStringLiteral("Id"), Align::Right);
    table.addColumn(QStringLiteral("Attribute"), Align::Left, render::Table::Shrink::Yes);
    table.addColumn(QStringLiteral("Value"), Align::Right);
    table.addColumn(QStringLiteral("Worst"), Align::Right);
    table.addColumn(QStringLiteral("Threshold"), Align::Right);
    table.addColumn(QStringLiteral("Raw"), Align::Right);
    table.addColumn(QStringLiteral("Kind"));
    for (const client::Attribute &attribute : attributes) {
        const auto colour = attribute.isFailing() ? render::Colour::Bad : render::Colour::Plain;
        table.addRow({{QString::number(attribute.id)},
                      {attribute_catalogue::name(qint32(attribute.id))},
                      {QString::number(attribute.current), colour},
                      {QString::number(attribute.worst)},
                      {QString::number(attribute.threshold)},
                      {QString::number(attribute.raw)},
                      {kindText(attribute), colour}});
    }
    return table.lines(style);
}

QJsonArray attributeArray(const QVector<client::Attribute> &attributes)
{
    QJsonArray array;
    for (const client::Attribute &attribute : attributes) {
        array.append(QJsonObject{
            {QStringLiteral("id"), int(attribute.id)},
            {QStringLiteral("name"), attribute_catalogue::name(qint32(attribute.id))},
            {QStringLiteral("value"), int(attribute.current)},
            {QStringLiteral("worst"), int(attribute.worst)},
            {QStringLiteral("threshold"), int(attribute.threshold)},
            {QStringLiteral("raw"), json::number(quint64(attribute.raw))},
            {QStringLiteral("prefailure"), attribute.isPrefailure},
            {QStringLiteral("failing"), attribute.isFailing()},
        });
    }
    return array;
}

} // namespace

int runSmart(Context &context)
{
    const auto index = context.driveArgument();
    if (!index)
        return context.refuseDrive();
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto drive = context.askDrive(*index);
    if (!drive)
        return context.fail(drive.failure());
    const auto attributes =
        context.session().query(client::requests::smartInfo(*index),
                                [&](const QString &reply) { return client::parseAttributes(reply, *index); });
    if (!attributes)
        return context.fail(attributes.failure());

    if (context.wantsJson()) {
        QJsonObject object = json::drive(*index, *drive);
        object.insert(QStringLiteral("attributes"), attributeArray(*attributes));
        context.output().print(QJsonDocument(object));
    } else if (attributes->isEmpty()) {
        context.output().note(QStringLiteral("drive %1 gives no S.M.A.R.T. attributes").arg(*index));
    } else {
        context.output().print(attributeTable(*attributes, context.style()));
    }
    return kExitFine;
}
