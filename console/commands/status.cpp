// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/command.h"
#include "console/commands/json.h"
#include "console/render/level.h"
#include "console/render/table.h"
#include "console/render/units.h"

namespace {

QString attributesText(const client::Drive &drive)
{
    switch (drive.smartState) {
    case 1:
        return QString::number(drive.attributeCount);
    case 0:
        return QStringLiteral("none");
    default:
        return QStringLiteral("not read");
    }
}

QStringList driveTable(const QVector<client::Drive> &drives, const render::Style &style)
{
    using render::Align;
    using Shrink = render::Table::Shrink;
    render::Table table;
    table.addColumn(QStringLiteral("No"), Align::Right);
    table.addColumn(QStringLiteral("Model"), Align::Left, Shrink::Yes);
    table.addColumn(QStringLiteral("Serial"), Align::Left, Shrink::Yes);
    table.addColumn(QStringLiteral("Size"), Align::Right);
    table.addColumn(QStringLiteral("Temp"), Align::Right);
    table.addColumn(QStringLiteral("Health"), Align::Right);
    table.addColumn(QStringLiteral("Level"));
    table.addColumn(QStringLiteral("Attrs"), Align::Right);
    for (int i = 0; i < drives.size(); ++i) {
        const client::Drive &drive = drives.at(i);
        table.addRow({{QString::number(i)},
                      {client::visible(drive.model)},
                      {client::visible(drive.serial)},
                      {render::sizeText(drive.capacity)},
                      render::temperatureCell(drive),
                      render::healthCell(drive),
                      render::levelCell(drive),
                      {attributesText(drive)}});
    }
    return table.lines(style);
}

QString headline(const client::Greeting &greeting, int drives, const render::Style &style)
{
    const QString level =
        painted(render::levelText(greeting.alertLevel), render::levelColour(greeting.alertLevel), style);
    return QStringLiteral("%1 on %2: %3, %4 %5, %6")
        .arg(client::visible(greeting.version), client::visible(greeting.hostName), level,
             QString::number(drives), drives == 1 ? QStringLiteral("drive") : QStringLiteral("drives"),
             render::timeText(greeting.time));
}

int levelExitCode(qint32 alertLevel)
{
    return alertLevel >= 3 ? kExitCritical : alertLevel == 2 ? kExitWarning : kExitFine;
}

} // namespace

int runStatus(Context &context)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto drives = context.session().query(QStringLiteral("ALLDEVINFO"), client::parseAllDrives);
    if (!drives)
        return context.fail(drives.failure());

    const bool isCheck = context.arguments().has(QStringLiteral("check"));
    Output &output = context.output();
    if (context.wantsJson()) {
        output.print(QJsonDocument(QJsonObject{{QStringLiteral("service"), json::service(*greeting)},
                                               {QStringLiteral("drives"), json::drives(*drives)}}));
    } else if (!context.arguments().has(QStringLiteral("quiet"))) {
        output.print(headline(*greeting, int(drives->size()), context.style()));
        if (!drives->isEmpty())
            output.print(driveTable(*drives, context.style()));
    }
    return isCheck ? levelExitCode(greeting->alertLevel) : kExitFine;
}
