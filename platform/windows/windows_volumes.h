// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/volumes.h"

/// The volumes that the mount manager knows.
class WindowsVolumes : public VolumeSystem
{
public:
    QStringList volumeNames() override;
    quint32 driveType(const QString &volumeOrLetter) override;
    std::optional<VolumeSpace> space(const QString &volumeName) override;
    std::optional<VolumeInformation> information(const QString &volumeName) override;
    std::optional<qint32> deviceNumber(const QString &devicePath) override;
    quint32 logicalDrives() override;
    std::optional<QString> volumeNameAt(const QString &letterRoot) override;
};
