// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/command.h"
#include "console/commands/json.h"
#include "console/render/bars.h"
#include "console/render/table.h"
#include "console/render/units.h"

namespace {

constexpr int kBarWidth = 12;
constexpr int kNarrowBarWidth = 5;
constexpr int kWideScreen = 100; ///< columns from which on the wide bar leaves room for labels

/// The share of a volume that is in use; nothing when its size is not known.
std::optional<double> usedShare(const client::Volume &volume)
{
    if (volume.totalBytes == 0 || volume.freeBytes > volume.totalBytes)
        return std::nullopt;
    return 1.0 - double(volume.freeBytes) / double(volume.totalBytes);
}

QStringList volumeTable(const QVector<client::Volume> &volumes, const render::Style &style)
{
    using render::Align;
    constexpr auto kShrink = render::Table::Shrink::Yes;
    const int barWidth = style.width >= kWideScreen ? kBarWidth : kNarrowBarWidth;
    render::Table table;
    table.addColumn(QStringLiteral("Drive"), Align::Right);
    table.addColumn(QStringLiteral("Volume"), Align::Left, kShrink);
    table.addColumn(QStringLiteral("Label"), Align::Left, kShrink);
    table.addColumn(QStringLiteral("File system"));
    table.addColumn(QStringLiteral("Serial"));
    table.addColumn(QStringLiteral("Size"), Align::Right);
    table.addColumn(QStringLiteral("Free"), Align::Right);
    table.addColumn(QStringLiteral("Used"));
    for (const client::Volume &volume : volumes) {
        const auto used = usedShare(volume);
        QString usedText = used ? QStringLiteral("%1 %").arg(*used * 100, 3, 'f', 0) : QStringLiteral("-");
        if (used && style.hasGraphics)
            usedText += QLatin1Char(' ') + render::progressBar(*used, barWidth);
        table.addRow({{QString::number(volume.drive)},
                      {client::visible(volume.root)},
                      {client::visible(volume.label)},
                      {client::visible(volume.fileSystem)},
                      {client::visible(volume.serial)},
                      {render::sizeText(volume.totalBytes)},
                      {render::sizeText(volume.freeBytes)},
                      {usedText}});
    }
    return table.lines(style);
}

} // namespace

int runVolumes(Context &context)
{
    const auto greeting = context.greet();
    if (!greeting)
        return context.fail(greeting.failure());
    const auto volumes = context.session().query(QStringLiteral("ALLVOLINFO"), client::parseAllVolumes);
    if (!volumes)
        return context.fail(volumes.failure());
    if (context.wantsJson())
        context.output().print(QJsonDocument(json::volumes(*volumes)));
    else if (volumes->isEmpty())
        context.output().note(QStringLiteral("there are no volumes on the drives"));
    else
        context.output().print(volumeTable(*volumes, context.style()));
    return kExitFine;
}
