// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/volume_entry.h"

#include <QDateTime>
#include <QString>
#include <QVector>

/// One S.M.A.R.T. attribute as a drive reported it.
struct AttributeEntry
{
    quint32 id = 0;
    QString name;
    QString description;
    quint64 raw = 0; ///< 48 bits; whole degrees Celsius for attribute 194
    quint32 current = 0;
    quint32 worst = 0;
    quint32 threshold = 0;
    qint32 reserved = 0; ///< sent to consoles, always 0
    quint32 flags = 0;
    quint32 notPrefailure = 0; ///< 1 when flag bit 0 is clear
    quint32 flagBit2 = 0;      ///< 0 or 1
};

/// Size of a sector in surface scans, in bytes. Independent of the drive's own sector size.
inline constexpr int kScanSectorSize = 512;

/// Sectors of kScanSectorSize, both ends inclusive.
struct SectorRange
{
    quint64 first = 0;
    quint64 last = 0;

    friend bool operator==(const SectorRange &a, const SectorRange &b)
    {
        return a.first == b.first && a.last == b.last;
    }
};

/// A drive that disappears during a scan fails every further block. This limit keeps the record, the replies
/// and the settings file at a few megabytes per drive.
inline constexpr int kMaxBadRanges = 100000;

/// Which request answered IDENTIFY; S.M.A.R.T. is read by the same one.
enum class AccessMethod : qint32 {
    None = -1,
    AtaPassThrough = 0,
    SmartDriveData = 1,
    IdePassThrough = 2,
    StorageDescriptor =
        3, ///< IDENTIFY is built from the descriptor; S.M.A.R.T. by the predict-failure request
};

/// Drive levels and the service-wide alert level, which is the worst of them.
namespace level {
inline constexpr qint32 kNotEvaluated = 0;
inline constexpr qint32 kFine = 1;
inline constexpr qint32 kWarning = 2;
inline constexpr qint32 kCritical = 3;
} // namespace level

/// The properties of a fixed disk that detection reads.
struct DetectedDrive
{
    qint32 deviceNumber = -1;
    QString path;
    int probeNumber = 0; ///< N of the path; sent with the S.M.A.R.T. drive-data request for IDENTIFY
    quint32 mediaType = 0;
    qint64 cylinders = 0;
    quint32 tracksPerCylinder = 0;
    quint32 sectorsPerTrack = 0;
    quint32 bytesPerSector = 0;
    AccessMethod accessMethod = AccessMethod::None;
    qint32 smartSupported = 0; ///< 0 or 1; -1 if IDENTIFY does not report it
    qint32 smartEnabled = 0;
    QString smartVersion;
    QString smartRevision;
    QString model;
    QString serial;
    QString descriptorSerial; ///< kept by the system, available without a request to the drive; may be empty
    QString firmware;
    quint64 capacity = 0; ///< bytes
    qint32 ataMajor = -1; ///< -1 when not reported
    QString ataVersion;
};

/// The result of the latest S.M.A.R.T. read of a drive.
enum class LastRead { None, Answered, Failed, Asleep };

/// The record of one fixed disk. Its place in the DeviceList is its identity in the protocol.
struct DeviceRecord : DetectedDrive
{
    // Set by S.M.A.R.T. reading.
    qint32 smartState = -1; ///< -1 never read, 1 the last full read returned attributes, 0 it returned none
    LastRead lastRead = LastRead::None; ///< unless Answered, the values below are of an earlier read
    bool hasTemperature = false;
    qint32 temperature = 0;     ///< degrees Celsius
    quint64 powerOnRaw = 0;     ///< attribute 9 at the latest read
    quint64 powerOnRawLast = 0; ///< attribute 9 at the latest full read
    qint32 attributeCount = 0;
    QVector<AttributeEntry> attributes; ///< in the order of the drive's table
    qint32 offlineStatus = 0;
    qint32 offlineCapability = 0;
    qint32 smartCapability = 0;

    // The values before the latest update.
    qint32 previousTemperature = 0;
    QVector<AttributeEntry> attributesPending;

    // Speed class of the power-on counter: 0 not known, 1 the slowest to 4.
    qint32 lifeTimeUnit = 0;
    bool lifeTimeDetected = false;

    // Set by the health evaluation.
    qint32 statusLevel = level::kCritical;
    qint32 health = 0; ///< percent

    qint32 monitored = 1;
    VolumeList volumes;

    // The last or current surface scan.
    QDateTime scanTime;
    qint32 scanError = 0; ///< 1 when the disk could not be opened
    qint32 scanPercent = 0;
    quint64 scanFirst = 0;
    quint64 scanCurrent = 0;
    QVector<SectorRange> badRanges; ///< one a failed block, at most kMaxBadRanges

    // The scan schedule.
    qint32 schedKind = 0;
    qint32 schedParam = 0;  ///< day of the week, 0 Monday to 6 Sunday
    SectorRange schedRange; ///< kept and stored; scheduled scans cover the whole drive
    QDate schedDate;
    QTime schedTime;
};

using DeviceList = QVector<DeviceRecord>;
