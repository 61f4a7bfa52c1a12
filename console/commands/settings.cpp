// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/client/requests.h"
#include "console/client/short_replies.h"
#include "console/commands/command.h"
#include "console/render/table.h"
#include "console/secret.h"
#include "console/settings_table.h"

#include <QJsonObject>

namespace {

QJsonObject settingsObject(const client::ServiceSettings &settings)
{
    QJsonObject object;
    for (const Setting &setting : settingsTable())
        object.insert(setting.name, setting.json(settings));
    return object;
}

QStringList settingsLines(const client::ServiceSettings &settings, const render::Style &style)
{
    render::Table table;
    table.addColumn(QStringLiteral("Name"));
    table.addColumn(QStringLiteral("Value"), render::Align::Left, render::Table::Shrink::Yes);
    table.addColumn(QStringLiteral("Meaning"), render::Align::Left, render::Table::Shrink::Yes);
    for (const Setting &setting : settingsTable())
        table.addRow({{setting.name},
                      {client::visible(setting.text(settings))},
                      {setting.explanation, render::Colour::Dim}});
    return table.lines(style);
}

} // namespace

int runSettingsShow(Context &context)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    if (context.wantsJson())
        context.output().print(QJsonDocument(settingsObject(greeting->settings)));
    else
        context.output().print(settingsLines(greeting->settings, context.style()));
    return kExitFine;
}

int runSettingsSet(Context &context)
{
    const Secret secret = obtainSecret(context.arguments(), QStringLiteral("Mail password: "));
    if (!secret.error.isEmpty())
        return context.refuse(secret.error);
    if (context.arguments().positionals.isEmpty() && !secret.text)
        return context.refuse(QStringLiteral("nothing to set; see halvexctl settings set --help"));
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    MergedSettings merged = mergeSettings(greeting->settings, context.arguments().positionals);
    if (!merged.error.isEmpty())
        return context.refuse(merged.error);
    if (secret.text)
        merged.settings.smtpPass = *secret.text;

    const auto done = context.session().query(client::requests::setSettings(merged.settings),
                                              client::exactly(QStringLiteral("SET_OK")));
    if (!done)
        return context.fail(done.failure());
    if (context.wantsJson())
        context.output().print(QJsonDocument(settingsObject(merged.settings)));
    else
        context.output().note(QStringLiteral("the settings are stored"));
    return kExitFine;
}
