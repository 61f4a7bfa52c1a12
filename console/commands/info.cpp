// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "console/commands/command.h"
#include "console/commands/json.h"
#include "console/render/level.h"
#include "console/render/table.h"
#include "console/render/units.h"

#include <algorithm>

namespace {

using Pairs = QVector<QPair<QString, QString>>;

QString lifeTimeText(const client::Drive &drive)
{
    // The service tells a class by how far the counter moves in two minutes; these are the units that do.
    static const QStringList kUnits{QStringLiteral("not known"), QStringLiteral("hours"),
                                    QStringLiteral("minutes"), QStringLiteral("half minutes"),
                                    QStringLiteral("seconds")};
    const bool isGuess = drive.lifeTimeUnit != 0 && !drive.lifeTimeDetected;
    return kUnits.value(drive.lifeTimeUnit) + (isGuess ? QStringLiteral(", by its size") : QString());
}

Pairs identityPairs(qint32 number, const client::Drive &drive)
{
    return {
        {QStringLiteral("Drive"), QString::number(number)},
        {QStringLiteral("Model"), client::visible(drive.model)},
        {QStringLiteral("Serial number"), client::visible(drive.serial)},
        {QStringLiteral("Firmware"), client::visible(drive.firmware)},
        {QStringLiteral("Size"), QStringLiteral("%1 (%2 bytes)")
                                     .arg(render::sizeText(drive.capacity), QString::number(drive.capacity))},
        {QStringLiteral("Bytes per sector"), QString::number(drive.bytesPerSector)},
        {QStringLiteral("Geometry"),
         QStringLiteral("%1 cylinders, %2 tracks, %3 sectors")
             .arg(QString::number(drive.cylinders), QString::number(drive.tracksPerCylinder),
                  QString::number(drive.sectorsPerTrack))},
        {QStringLiteral("ATA version"),
         drive.ataVersion.isEmpty() ? QStringLiteral("-") : client::visible(drive.ataVersion)},
    };
}

Pairs healthPairs(const client::Drive &drive, const render::Style &style)
{
    const render::Cell level = render::levelCell(drive);
    return {
        {QStringLiteral("Level"), painted(level.text, level.colour, style)},
        {QStringLiteral("Health"), render::healthCell(drive).text},
        {QStringLiteral("Temperature"), render::temperatureCell(drive).text},
        {QStringLiteral("Attributes"), QString::number(drive.attributeCount)},
        {QStringLiteral("Power-on counter"),
         QStringLiteral("%1 (at the last full read %2)").arg(drive.powerOnRaw).arg(drive.powerOnRawLast)},
        {QStringLiteral("It counts"), lifeTimeText(drive)},
        {QStringLiteral("Off-line status"), QString::number(drive.offlineStatus)},
        {QStringLiteral("Off-line capability"), QString::number(drive.offlineCapability)},
        {QStringLiteral("S.M.A.R.T. capability"), QString::number(drive.smartCapability)},
        {QStringLiteral("Monitored"), drive.monitored != 0 ? QStringLiteral("yes") : QStringLiteral("no")},
    };
}

Pairs volumePairs(const QVector<client::Volume> &volumes)
{
    Pairs pairs;
    for (const client::Volume &volume : volumes) {
        pairs.append({QStringLiteral("Volume"),
                      QStringLiteral("%1  %2 (%3), %4 free of %5")
                          .arg(client::visible(volume.root), client::visible(volume.label),
                               client::visible(volume.fileSystem), render::sizeText(volume.freeBytes),
                               render::sizeText(volume.totalBytes))});
    }
    return pairs;
}

} // namespace

int runInfo(Context &context)
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
    const auto allVolumes = context.session().query(QStringLiteral("ALLVOLINFO"), client::parseAllVolumes);
    if (!allVolumes)
        return context.fail(allVolumes.failure());
    QVector<client::Volume> volumes;
    std::copy_if(allVolumes->cbegin(), allVolumes->cend(), std::back_inserter(volumes),
                 [&](const client::Volume &volume) { return volume.drive == *index; });

    if (context.wantsJson()) {
        QJsonObject object = json::drive(*index, *drive);
        object.insert(QStringLiteral("volumes"), json::volumes(volumes));
        context.output().print(QJsonDocument(object));
        return kExitFine;
    }
    const Pairs pairs =
        identityPairs(*index, *drive) + healthPairs(*drive, context.style()) + volumePairs(volumes);
    context.output().print(render::pairLines(pairs, context.style()));
    return kExitFine;
}
