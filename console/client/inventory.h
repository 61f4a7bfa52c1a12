// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QVector>

#include <optional>

namespace client {

/// One drive as the service reports it; its place in the list is the number that requests name it by.
struct Drive
{
    QString model;
    QString serial;
    QString firmware;
    quint64 capacity = 0; ///< bytes
    qint32 ataMajor = -1; ///< -1 when the drive does not tell
    QString ataVersion;
    qint32 smartState = -1; ///< -1 never read, 0 no attributes, 1 read
    qint64 cylinders = 0;
    quint32 tracksPerCylinder = 0;
    quint32 sectorsPerTrack = 0;
    quint32 bytesPerSector = 0;
    qint32 offlineStatus = 0;
    qint32 offlineCapability = 0;
    qint32 smartCapability = 0;
    qint32 attributeCount = 0;
    qint32 volumeCount = 0;
    bool lifeTimeDetected = false;
    qint32 lifeTimeUnit = 0; ///< 0 not known, 1 to 4
    qint64 powerOnRaw = 0;
    qint64 powerOnRawLast = 0;
    bool hasTemperature = false;
    qint32 temperature = 0; ///< degrees Celsius
    qint32 statusLevel = 0; ///< 0 not evaluated, 1 fine, 2 warning, 3 critical; see isRated()
    qint32 health = 0;      ///< percent
    qint32 monitored = 0;

    /// A drive that gave no attributes, or that is not watched, was never rated: its level and health are
    /// what it started with.
    [[nodiscard]] bool isRated() const { return smartState > 0 && monitored != 0; }
};

struct Volume
{
    qint32 drive = 0;
    QString root;
    QString label;
    QString fileSystem;
    QString serial;
    quint64 totalBytes = 0;
    quint64 freeBytes = 0;
};

struct Attribute
{
    quint32 id = 0;
    bool isPrefailure = false;
    bool flagBit2 = false;
    quint32 current = 0;
    quint32 worst = 0;
    quint32 threshold = 0;
    qint64 raw = 0;

    /// The service rates a drive with such an attribute as "warning" or worse.
    [[nodiscard]] bool isFailing() const
    {
        constexpr quint32 kLowestGoodValue = 11;
        return isPrefailure && (current <= threshold || current < kLowestGoodValue);
    }
};

[[nodiscard]] std::optional<QVector<Drive>> parseAllDrives(const QString &reply);
/// `index` is the drive that was asked for; a reply about another one does not fit.
[[nodiscard]] std::optional<Drive> parseDrive(const QString &reply, qint32 index);
[[nodiscard]] std::optional<QVector<Volume>> parseAllVolumes(const QString &reply);
[[nodiscard]] std::optional<QVector<Attribute>> parseAttributes(const QString &reply, qint32 index);

} // namespace client
