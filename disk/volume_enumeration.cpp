// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "disk/volume_enumeration.h"

#include <algorithm>
#include <optional>

namespace {

constexpr int kLetters = 26;

/// Formats four digits, a dash, four digits.
QString serialText(quint32 serial)
{
    const QString digits = QStringLiteral("%1").arg(serial, 8, 16, QLatin1Char('0')).toUpper();
    return digits.left(4) + QLatin1Char('-') + digits.mid(4);
}

/// Sets the root of each volume with a letter; of several letters the first.
void assignLetters(VolumeSystem &volumes, VolumeList &list)
{
    const quint32 inUse = volumes.logicalDrives();
    for (int i = 0; i < kLetters; ++i) {
        const QString letter = QChar(ushort('A' + i)) + QStringLiteral(":");
        if ((inUse >> i & 1U) == 0 || volumes.driveType(letter) != VolumeSystem::kFixedDrive)
            continue;
        const QString root = letter + QLatin1Char('\\');
        const std::optional<QString> name = volumes.volumeNameAt(root);
        if (!name)
            continue;
        const auto entry = std::find_if(list.begin(), list.end(), [&name](const VolumeEntry &candidate) {
            return candidate.volumeName == *name && candidate.root.isEmpty();
        });
        if (entry != list.end())
            entry->root = root;
    }
}

/// Numbers the volumes without a letter.
void numberOthers(VolumeList &list)
{
    int number = 1;
    for (VolumeEntry &entry : list) {
        if (entry.root.isEmpty())
            entry.root = QStringLiteral("%1:\\").arg(number++);
    }
}

} // namespace

namespace volume_enumeration {

VolumeList list(VolumeSystem &volumes)
{
    VolumeList list;
    const QStringList names = volumes.volumeNames();
    for (int ordinal = 0; ordinal < names.size(); ++ordinal) {
        if (volumes.driveType(names.at(ordinal)) != VolumeSystem::kFixedDrive)
            continue;
        VolumeEntry entry;
        entry.ordinal = ordinal;
        entry.volumeName = names.at(ordinal);
        entry.fileSystem = QStringLiteral("Unknown");
        list.append(entry);
    }
    assignLetters(volumes, list);
    numberOthers(list);
    return list;
}

VolumeEntry describe(VolumeSystem &volumes, VolumeEntry listed)
{
    const QString name = listed.volumeName;
    if (const std::optional<VolumeSpace> space = volumes.space(name)) {
        listed.totalBytes = space->totalBytes;
        listed.freeBytes = space->freeBytes;
    }
    if (const std::optional<VolumeInformation> information = volumes.information(name)) {
        listed.label = information->label;
        listed.fileSystem = information->fileSystem;
        listed.volumeSerial = serialText(information->serial);
    }
    const QString devicePath = name.endsWith(QLatin1Char('\\')) ? name.chopped(1) : name;
    listed.deviceNumber = volumes.deviceNumber(devicePath).value_or(-1);
    return listed;
}

void assign(const VolumeList &volumes, DeviceList &devices)
{
    for (DeviceRecord &device : devices)
        device.volumes.clear();
    for (const VolumeEntry &volume : volumes) {
        const auto device =
            std::find_if(devices.begin(), devices.end(), [&volume](const DeviceRecord &candidate) {
                return candidate.deviceNumber == volume.deviceNumber;
            });
        if (device != devices.end())
            device->volumes.append(volume);
    }
}

} // namespace volume_enumeration
