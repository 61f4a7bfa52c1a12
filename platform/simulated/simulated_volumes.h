// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/simulated/machine.h"
#include "platform/volumes.h"

#include <memory>

class SimulatedVolumes : public VolumeSystem
{
public:
    explicit SimulatedVolumes(std::shared_ptr<Machine> machine);

    QStringList volumeNames() override;
    quint32 driveType(const QString &volumeOrLetter) override;
    std::optional<VolumeSpace> space(const QString &volumeName) override;
    std::optional<VolumeInformation> information(const QString &volumeName) override;
    std::optional<qint32> deviceNumber(const QString &devicePath) override;
    quint32 logicalDrives() override;
    std::optional<QString> volumeNameAt(const QString &letterRoot) override;

private:
    std::shared_ptr<Machine> m_machine;
};
