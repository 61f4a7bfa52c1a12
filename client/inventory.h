// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/level.h"
#include "wire/attribute_limits.h"
#include "wire/power_on_counter.h"

#include <QString>
#include <QVector>

#include <optional>

namespace client {

/// The result of the latest S.M.A.R.T. read of a drive.
enum class SmartState {
    NeverRead = -1,
    NoAttributes = 0,
    Read = 1,
};

/// One drive as the service reports it.
struct Drive
{
    qint32 number = 0; ///< its place in the service's list; requests name the drive by it
    QString model;
    QString serial;
    QString firmware;
    quint64 capacity = 0; ///< bytes
    qint32 ataMajor = -1; ///< -1 if the drive does not report it
    QString ataVersion;
    SmartState smartState = SmartState::NeverRead;
    qint64 cylinders = 0;
    quint32 tracksPerCylinder = 0;
    quint32 sectorsPerTrack = 0;
    quint32 bytesPerSector = 0;
    qint32 offlineStatus = 0;
    qint32 offlineCapability = 0;
    qint32 smartCapability = 0;
    qint32 attributeCount = 0;
    qint32 volumeCount = 0;
    PowerOnCounter powerOn;
    qint64 powerOnRawLast = 0;           ///< at the latest full read
    std::optional<qint32> temperature;   ///< degrees Celsius
    Level statusLevel = Level::NotRated; ///< as reported; level() has the meaning
    qint32 health = 0;                   ///< percent; without a meaning unless isRated()
    qint32 monitored = 0;

    /// Returns false for a drive without attributes and for one that is not monitored: the service never
    /// rated it, and its level and health are initial values.
    [[nodiscard]] bool isRated() const { return smartState == SmartState::Read && monitored != 0; }
    [[nodiscard]] Level level() const { return isRated() ? statusLevel : Level::NotRated; }
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

    quint32 flags = 0; ///< only in allAttributes(): the drive's 16 status flags

    /// Returns whether the service rates the drive as warning or worse because of this attribute.
    [[nodiscard]] bool isFailing() const
    {
        return isPrefailure && attribute_limits::isFailing(current, threshold);
    }
};

/// An attribute in a reply about all drives.
struct DriveAttribute
{
    qint32 drive = 0;
    Attribute attribute;
};

[[nodiscard]] std::optional<QVector<Drive>> parseAllDrives(const QString &reply);
/// A reply about another drive than `index` does not fit.
[[nodiscard]] std::optional<Drive> parseDrive(const QString &reply, qint32 index);
[[nodiscard]] std::optional<QVector<Volume>> parseAllVolumes(const QString &reply);
[[nodiscard]] std::optional<QVector<Attribute>> parseAttributes(const QString &reply, qint32 index);
[[nodiscard]] std::optional<QVector<DriveAttribute>> parseAllAttributes(const QString &reply);

} // namespace client
