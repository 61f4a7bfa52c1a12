// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"
#include "platform/volumes.h"

/// A machine without drives: every path is one that is not there.
class NoDrives : public DriveSystem
{
public:
    OpenReply open(const QString &) override { return {nullptr, system_error::kFileNotFound}; }
};

/// A machine without volumes.
class NoVolumes : public VolumeSystem
{
public:
    QStringList volumeNames() override { return {}; }
    quint32 driveType(const QString &) override { return kNoRootDirectory; }
    std::optional<VolumeSpace> space(const QString &) override { return std::nullopt; }
    std::optional<VolumeInformation> information(const QString &) override { return std::nullopt; }
    std::optional<qint32> deviceNumber(const QString &) override { return std::nullopt; }
    quint32 logicalDrives() override { return 0; }
    std::optional<QString> volumeNameAt(const QString &) override { return std::nullopt; }

private:
    static constexpr quint32 kNoRootDirectory = 1; // DRIVE_NO_ROOT_DIR
};
