// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/accounts.h"
#include "platform/smart_layout.h"
#include "platform/volumes.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// The simulated machine as values, filled from its file and never changed afterwards.

/// One S.M.A.R.T. attribute, as in the drive's two sectors.
struct AttributeState
{
    quint8 id = 0;
    quint16 flags = 0;
    quint8 current = 0;
    quint8 worst = 0;
    quint8 threshold = 0;
    quint64 raw = 0; ///< 48 bits
};

struct SmartState
{
    bool enabled = true;
    quint8 offlineStatus = 0;
    quint8 offlineCapability = 0;
    quint16 smartCapability = 0;
    QVector<AttributeState> attributes; ///< at most kMostAttributes

    static constexpr int kMostAttributes = smart_layout::kSlotCount;
};

struct GeometryState
{
    qint64 cylinders = 0;
    quint32 tracksPerCylinder = 255;
    quint32 sectorsPerTrack = 63;
};

struct DescriptorState
{
    QString vendor;
    QString product;
    QString revision;
    QString serial;
};

/// Sectors of 512 bytes, both ends inclusive. Independent of the drive's own sector size.
struct BadSectors
{
    quint64 first = 0;
    quint64 last = 0;
};

struct DriveState
{
    int number = 0;
    QString model;
    QString serial;
    QString firmware;
    quint64 capacityBytes = 0;
    quint32 bytesPerSector = 512;
    GeometryState geometry;
    quint16 ataMajor = 0;
    quint16 ataMinor = 0;
    SmartState smart;
    DescriptorState descriptor;
    quint32 deviceNumber = 0;
    quint32 mediaType = 12;
    QStringList answers;
    quint32 openError = 0;
    QString image; ///< path of the file that holds the sectors; empty for zero bytes
    QVector<BadSectors> badSectors;
    int smartDelayMs = 0;
    int readDelayMs = 0;
    int identifyDelayMs = 0;
    QStringList hangs;     ///< kinds of requests that never return
    bool sleeping = false; ///< in standby until another command than CHECK POWER MODE arrives

    // The drive's sectors of 512 bytes, built once so that a request only copies.
    QByteArray identify;
    QByteArray smartData;
    QByteArray smartThresholds;
};

struct VolumeState
{
    QString name; ///< with its trailing backslash
    QString letters;
    quint32 driveType = VolumeSystem::kFixedDrive;
    VolumeInformation information;
    quint32 deviceNumber = 0;
    VolumeSpace space;
    QStringList fails; ///< the requests that fail
};

struct MachineState
{
    QVector<DriveState> drives;
    QVector<VolumeState> volumes;
    QVector<Account> accounts;
    QString eventLog; ///< path; empty: events are discarded

    /// Returns null if the machine has no such drive.
    [[nodiscard]] const DriveState *drive(int number) const
    {
        for (const DriveState &drive : drives) {
            if (drive.number == number)
                return &drive;
        }
        return nullptr;
    }
};

/// The allowed values of DriveState::answers, DriveState::hangs and VolumeState::fails.
namespace answer_name {
inline const QString kGeometry = QStringLiteral("geometry");
inline const QString kPartition = QStringLiteral("partition");
inline const QString kDeviceNumber = QStringLiteral("deviceNumber");
inline const QString kDescriptor = QStringLiteral("descriptor");
inline const QString kSmartVersion = QStringLiteral("smartVersion");
inline const QString kAta = QStringLiteral("ata");
inline const QString kSmart = QStringLiteral("smart");
inline const QString kIde = QStringLiteral("ide");
inline const QString kPredict = QStringLiteral("predict");
} // namespace answer_name

namespace hang_name {
inline const QString kOpen = QStringLiteral("open");
inline const QString kGeometry = QStringLiteral("geometry");
inline const QString kIdentify = QStringLiteral("identify");
inline const QString kSmart = QStringLiteral("smart");
inline const QString kRead = QStringLiteral("read");
} // namespace hang_name

namespace failure_name {
inline const QString kSpace = QStringLiteral("space");
inline const QString kInformation = QStringLiteral("information");
inline const QString kDeviceNumber = QStringLiteral("deviceNumber");
} // namespace failure_name
