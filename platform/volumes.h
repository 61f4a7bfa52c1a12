// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QStringList>

#include <optional>

struct VolumeSpace
{
    quint64 totalBytes = 0;
    quint64 freeBytes = 0; ///< all free bytes, not the caller's quota
};

struct VolumeInformation
{
    QString label;
    QString fileSystem;
    quint32 serial = 0;
};

/// The machine's volumes. All functions may be called on any thread, return nullopt on failure, and block
/// while a volume's drive does not answer.
class VolumeSystem
{
public:
    static constexpr quint32 kFixedDrive = 3; ///< DRIVE_FIXED

    VolumeSystem() = default;
    VolumeSystem(const VolumeSystem &) = delete;
    VolumeSystem &operator=(const VolumeSystem &) = delete;
    virtual ~VolumeSystem() = default;

    /// Returns every volume's name, with its trailing backslash, in the system's order; empty if the system
    /// refuses.
    virtual QStringList volumeNames() = 0;

    /// Returns the drive type (GetDriveTypeW's numbers) of a volume name or of a letter and colon.
    virtual quint32 driveType(const QString &volumeOrLetter) = 0;

    virtual std::optional<VolumeSpace> space(const QString &volumeName) = 0;
    virtual std::optional<VolumeInformation> information(const QString &volumeName) = 0;

    /// Returns the number of the volume's disk; `devicePath` is the name without its last backslash.
    virtual std::optional<qint32> deviceNumber(const QString &devicePath) = 0;

    /// Returns the letters in use: bit n stands for 'A' + n.
    virtual quint32 logicalDrives() = 0;

    /// Returns the name of the volume mounted at a letter's root ("C:\").
    virtual std::optional<QString> volumeNameAt(const QString &letterRoot) = 0;
};
