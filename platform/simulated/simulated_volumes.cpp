// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/simulated_volumes.h"

#include <algorithm>
#include <utility>

namespace {

template <typename Test>
std::optional<VolumeState> findVolume(Machine &machine, const Test &test)
{
    const std::shared_ptr<const MachineState> state = machine.state();
    const auto volume = std::find_if(state->volumes.cbegin(), state->volumes.cend(), test);
    return volume == state->volumes.cend() ? std::nullopt : std::make_optional(*volume);
}

std::optional<VolumeState> volumeNamed(Machine &machine, const QString &name)
{
    return findVolume(machine, [&name](const VolumeState &volume) { return volume.name == name; });
}

/// Returns the volume of a letter followed by `tail` (":" or ":\").
std::optional<VolumeState> volumeAtLetter(Machine &machine, const QString &text, const QString &tail)
{
    if (text.size() != 1 + tail.size() || !text.endsWith(tail))
        return std::nullopt;
    return findVolume(machine,
                      [&text](const VolumeState &volume) { return volume.letters.contains(text.at(0)); });
}

} // namespace

SimulatedVolumes::SimulatedVolumes(std::shared_ptr<Machine> machine)
    : m_machine(std::move(machine))
{}

QStringList SimulatedVolumes::volumeNames()
{
    QStringList names;
    const std::shared_ptr<const MachineState> state = m_machine->state();
    for (const VolumeState &volume : state->volumes)
        names.append(volume.name);
    return names;
}

quint32 SimulatedVolumes::driveType(const QString &volumeOrLetter)
{
    constexpr quint32 kNoRootFolder = 1; // DRIVE_NO_ROOT_DIR
    std::optional<VolumeState> volume = volumeNamed(*m_machine, volumeOrLetter);
    if (!volume)
        volume = volumeAtLetter(*m_machine, volumeOrLetter, QStringLiteral(":"));
    return volume ? volume->driveType : kNoRootFolder;
}

std::optional<VolumeSpace> SimulatedVolumes::space(const QString &volumeName)
{
    const std::optional<VolumeState> volume = volumeNamed(*m_machine, volumeName);
    if (!volume || volume->fails.contains(failure_name::kSpace))
        return std::nullopt;
    return volume->space;
}

std::optional<VolumeInformation> SimulatedVolumes::information(const QString &volumeName)
{
    const std::optional<VolumeState> volume = volumeNamed(*m_machine, volumeName);
    if (!volume || volume->fails.contains(failure_name::kInformation))
        return std::nullopt;
    return volume->information;
}

std::optional<qint32> SimulatedVolumes::deviceNumber(const QString &devicePath)
{
    const std::optional<VolumeState> volume = volumeNamed(*m_machine, devicePath + QLatin1Char('\\'));
    if (!volume || volume->fails.contains(failure_name::kDeviceNumber))
        return std::nullopt;
    return qint32(volume->deviceNumber);
}

quint32 SimulatedVolumes::logicalDrives()
{
    quint32 mask = 0;
    const std::shared_ptr<const MachineState> state = m_machine->state();
    for (const VolumeState &volume : state->volumes) {
        for (const QChar letter : volume.letters)
            mask |= quint32(1) << (letter.unicode() - u'A');
    }
    return mask;
}

std::optional<QString> SimulatedVolumes::volumeNameAt(const QString &letterRoot)
{
    const std::optional<VolumeState> volume = volumeAtLetter(*m_machine, letterRoot, QStringLiteral(":\\"));
    return volume ? std::make_optional(volume->name) : std::nullopt;
}
