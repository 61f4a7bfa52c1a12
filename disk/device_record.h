// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/volume_entry.h"
#include "wire/power_on_counter.h"
#include "wire/scan_limits.h"

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

/// The names of a drive, and the requests that reach it.
struct DriveIdentity
{
    qint32 deviceNumber = -1;
    QString path;
    int probeNumber = 0; ///< N of the path; sent with the S.M.A.R.T. drive-data request for IDENTIFY
    AccessMethod accessMethod = AccessMethod::None;
    QString model;
    QString serial;
    QString descriptorSerial; ///< kept by the system, available without a request to the drive; may be empty
    QString firmware;
    qint32 ataMajor = -1; ///< -1 when not reported
    QString ataVersion;
    qint32 smartSupported = 0; ///< 0 or 1; -1 if IDENTIFY does not report it
    qint32 smartEnabled = 0;
    QString smartVersion;
    QString smartRevision;
};

struct DriveCapacity
{
    quint32 mediaType = 0;
    qint64 cylinders = 0;
    quint32 tracksPerCylinder = 0;
    quint32 sectorsPerTrack = 0;
    quint32 bytesPerSector = 0;
    quint64 capacity = 0; ///< bytes
};

/// The properties of a fixed disk that detection reads.
struct DetectedDrive : DriveIdentity, DriveCapacity
{
};

/// The result of the latest full S.M.A.R.T. read, as the protocol numbers it.
enum class FullRead : qint32 { Never = -1, NoAttributes = 0, Attributes = 1 };

/// The result of the latest S.M.A.R.T. read of a drive.
enum class LastRead { None, Answered, Failed, Asleep };

/// The values of S.M.A.R.T. reading. Unless `lastRead` is Answered they are of an earlier read.
struct SmartValues
{
    FullRead fullRead = FullRead::Never;
    LastRead lastRead = LastRead::None;
    bool hasTemperature = false;
    qint32 temperature = 0;     ///< degrees Celsius
    PowerOnCounter powerOn;     ///< attribute 9 at the latest read
    quint64 powerOnRawLast = 0; ///< its raw value at the latest full read
    qint32 attributeCount = 0;
    QVector<AttributeEntry> attributes; ///< in the order of the drive's table
    qint32 offlineStatus = 0;
    qint32 offlineCapability = 0;
    qint32 capability = 0;

    // Before the latest update.
    qint32 previousTemperature = 0;
    QVector<AttributeEntry> previousAttributes;
};

/// The result of the latest evaluation of a drive.
struct StoredRating
{
    qint32 level = level::kCritical;
    qint32 health = 0; ///< percent
};

/// The progress of a running scan, or the result of the latest one.
struct ScanProgress
{
    bool hasOpenFailed = false;
    qint32 percent = 0;
    quint64 first = 0;
    quint64 current = 0;            ///< the last sector handled
    QDateTime time;                 ///< of the start, then of the end; invalid before the disk is open
    QVector<SectorRange> badRanges; ///< at most kMaxBadRanges
};

/// Other numbers are stored and reported, and never due.
enum class ScheduleKind : qint32 { None = 0, Once = 1, Daily = 2, Weekly = 3 };

/// The times at which the whole drive is scanned.
struct ScanSchedule
{
    ScheduleKind kind = ScheduleKind::None;
    qint32 weekday = 0; ///< 0 Monday to 6 Sunday, for Weekly; consoles may set any number
    QDate date;         ///< invalid: a schedule by date is never due
    QTime time;         ///< invalid: the schedule is never due
};

/// The record of one fixed disk. Its place in the DeviceList is its identity in the protocol.
struct DeviceRecord : DetectedDrive
{
    qint32 monitored = 1;
    SmartValues smart;
    StoredRating rating;
    VolumeList volumes;
    ScanProgress scan;
    ScanSchedule schedule;
    SectorRange scheduleRange; ///< stored, but not used
};

using DeviceList = QVector<DeviceRecord>;
