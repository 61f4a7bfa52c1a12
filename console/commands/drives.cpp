// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/columns.h"
#include "client/documents.h"
#include "client/units.h"
#include "console/context.h"
#include "console/render/bars.h"

#include <algorithm>

namespace {

namespace requests = client::requests;
using client::Cell;
using client::Drive;
using client::Level;
using client::Volume;

constexpr int kBarWidth = 12;
constexpr int kNarrowBarWidth = 5;
constexpr int kWideScreen = 100; ///< columns from which the wide bar leaves enough space for labels

Option csvOption()
{
    return option("csv", "", "Print the table as CSV, with the keys of --json as heading.");
}

QString headline(const client::Greeting &greeting, int drives, const render::Style &style)
{
    const QString level = painted(levelName(greeting.level), levelTone(greeting.level), style);
    return QStringLiteral("%1 on %2: %3, %4 %5, %6")
        .arg(client::visible(greeting.version), client::visible(greeting.hostName), level,
             QString::number(drives), drives == 1 ? QStringLiteral("drive") : QStringLiteral("drives"),
             client::timeText(greeting.time));
}

int levelExitCode(Level level)
{
    switch (level) {
    case Level::Critical:
        return kExitCritical;
    case Level::Warning:
        return kExitWarning;
    case Level::Fine:
    case Level::NotRated:
        break;
    }
    return kExitFine;
}

void status(Context &context)
{
    const auto drives = context.ask(requests::allDrives());
    const client::Greeting greeting = context.greeting();
    const Arguments &arguments = context.arguments();
    if (context.wantsJson()) {
        context.output().print(QJsonDocument(client::documents::status(greeting, drives, context.zone())));
    } else if (!arguments.has(QStringLiteral("quiet"))) {
        if (!arguments.has(QStringLiteral("csv")))
            context.output().print(headline(greeting, int(drives.size()), context.style()));
        context.showText(client::driveColumns(), drives, {});
    }
    if (arguments.has(QStringLiteral("check")) && greeting.level > Level::Fine)
        throw CommandFailure{levelExitCode(greeting.level), {}};
}

/// Returns the version that the drive reports, else the name of its major version (ATA8-ACS, word 80).
QString ataVersionText(const Drive &drive)
{
    static const QStringList kNames{QStringLiteral("ATA8-ACS"), QStringLiteral("ACS-2"),
                                    QStringLiteral("ACS-3"), QStringLiteral("ACS-4"),
                                    QStringLiteral("ACS-5")};
    constexpr qint32 kFirstNamed = 8;
    if (!drive.ataVersion.isEmpty())
        return client::visible(drive.ataVersion);
    if (drive.ataMajor < 1)
        return QStringLiteral("-");
    return kNames.value(drive.ataMajor - kFirstNamed, QStringLiteral("ATA-%1").arg(drive.ataMajor));
}

QString powerOnText(const PowerOnCounter &counter)
{
    static const QStringList kUnits{QString(), QStringLiteral("hours"), QStringLiteral("minutes"),
                                    QStringLiteral("half minutes"), QStringLiteral("seconds")};
    const auto hours = counter.hours();
    if (!hours)
        return QStringLiteral("unknown (raw value %1)").arg(counter.raw);
    const QString origin = counter.isMeasured ? QString() : QStringLiteral(", unit inferred from the value");
    return QStringLiteral("%1 h (%2 %3%4)")
        .arg(QString::number(*hours), QString::number(counter.raw), kUnits.value(int(counter.unit)), origin);
}

using Details = client::Columns<Drive>;

/// Returns the rows of `info`.
Details detailColumns()
{
    const auto row = [](const char *heading, const std::function<QString(const Drive &)> &text) {
        const auto cell = [text](const Drive &d) { return Cell{text(d)}; };
        return client::cells<Drive>(heading, client::Layout::Left, cell);
    };
    const auto number = [](qint64 value) { return QString::number(value); };
    const auto shared = [](const char *key, const char *heading) {
        client::Column<Drive> column = client::driveColumn(key);
        column.heading = QString::fromUtf8(heading);
        return column;
    };
    return {
        shared("number", "Drive"),
        shared("model", "Model"),
        shared("serial", "Serial number"),
        shared("firmware", "Firmware"),
        row("Size",
            [](const Drive &d) {
                return QStringLiteral("%1 (%2 bytes)").arg(client::sizeText(d.capacity)).arg(d.capacity);
            }),
        shared("bytesPerSector", "Bytes per sector"),
        row("Geometry",
            [](const Drive &d) {
                return QStringLiteral("%1 cylinders, %2 tracks, %3 sectors")
                    .arg(d.cylinders)
                    .arg(d.tracksPerCylinder)
                    .arg(d.sectorsPerTrack);
            }),
        row("ATA version", ataVersionText),
        shared("level", "Level"),
        shared("healthPercent", "Health"),
        shared("temperatureCelsius", "Temperature"),
        shared("attributeCount", "Attributes"),
        row("Power-on time", [](const Drive &d) { return powerOnText(d.powerOn); }),
        row("Off-line status", [number](const Drive &d) { return number(d.offlineStatus); }),
        row("Off-line capability", [number](const Drive &d) { return number(d.offlineCapability); }),
        row("S.M.A.R.T. capability", [number](const Drive &d) { return number(d.smartCapability); }),
        shared("monitored", "Monitored"),
    };
}

QStringList infoLines(const Drive &drive, const QVector<Volume> &volumes, const render::Style &style)
{
    QVector<QPair<QString, Cell>> pairs;
    for (const client::Column<Drive> &column : detailColumns())
        pairs.append({column.heading, column.cellOfRow(drive)});
    for (const Volume &volume : volumes) {
        const QString text = QStringLiteral("%1  %2 (%3), %4 free of %5")
                                 .arg(client::visible(volume.root), client::visible(volume.label),
                                      client::visible(volume.fileSystem), client::sizeText(volume.freeBytes),
                                      client::sizeText(volume.totalBytes));
        pairs.append({QStringLiteral("Volume"), Cell{text}});
    }
    return render::pairLines(pairs, style);
}

void info(Context &context)
{
    const qint32 number = context.driveArgument();
    const Drive drive = context.ask(requests::drive(number));
    const auto all = context.ask(requests::allVolumes());
    QVector<Volume> volumes;
    std::copy_if(all.cbegin(), all.cend(), std::back_inserter(volumes),
                 [number](const Volume &volume) { return volume.drive == number; });
    context.show(client::documents::info(drive, volumes), infoLines(drive, volumes, context.style()));
}

void smart(Context &context)
{
    const qint32 number = context.driveArgument();
    const Drive drive = context.ask(requests::drive(number));
    const auto attributes = context.ask(requests::attributes(number));
    if (context.wantsJson())
        context.output().print(QJsonDocument(client::documents::smart(drive, attributes)));
    else
        context.showText(client::attributeColumns(), attributes,
                         QStringLiteral("drive %1 does not report S.M.A.R.T. attributes").arg(number));
}

/// Returns the share of a volume that is in use, or nothing if its size is unknown.
std::optional<double> usedShare(const Volume &volume)
{
    if (volume.totalBytes == 0 || volume.freeBytes > volume.totalBytes)
        return std::nullopt;
    return 1.0 - double(volume.freeBytes) / double(volume.totalBytes);
}

client::Column<Volume> usedColumn(const render::Style &style)
{
    const int barWidth = style.width >= kWideScreen ? kBarWidth : kNarrowBarWidth;
    const auto cell = [style, barWidth](const Volume &volume) {
        const auto used = usedShare(volume);
        if (!used)
            return Cell{QStringLiteral("-"), client::Tone::Dim};
        const QString percent = QStringLiteral("%1 %").arg(*used * 100, 3, 'f', 0);
        return Cell{style.hasGraphics ? percent + QLatin1Char(' ') + render::progressBar(*used, barWidth)
                                      : percent};
    };
    return client::cells<Volume>("Used", client::Layout::Left, cell);
}

void volumes(Context &context)
{
    context.showTable(client::volumeColumns() + client::Columns<Volume>{usedColumn(context.style())},
                      context.ask(requests::allVolumes()),
                      QStringLiteral("there are no volumes on the drives"));
}

void count(Context &context)
{
    const qint32 count = context.ask(requests::driveCount());
    context.show({{QStringLiteral("drives"), count}}, QString::number(count));
}

} // namespace

QVector<Command> driveCommands()
{
    return {
        command("status", "", 0, 0, status, "Show all drives with temperature, health and level.",
                "The levels are those of the service. A drive without S.M.A.R.T. attributes is not rated.",
                {option("check", "", "Exit with 3 at level warning and 4 at level critical."), csvOption()}),
        command("info", "N", 1, 1, info, "Show all properties of drive N."),
        command("smart", "N", 1, 1, smart, "Show the S.M.A.R.T. attributes of drive N.", "", {csvOption()}),
        command("volumes", "", 0, 0, volumes, "Show the volumes on the drives and their free space.", "",
                {csvOption()}),
        command("count", "", 0, 0, count, "Print the number of drives."),
    };
}
