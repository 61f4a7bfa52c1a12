// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/failure.h"
#include "wire/scan_limits.h"

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QTime>
#include <QVector>

#include <optional>

namespace client {

/// Sectors, both ends inclusive.
struct SectorRange
{
    quint64 first = 0;
    quint64 last = 0;
};

/// Returns the sectors from `first` to `last` of a drive of `capacity` bytes, by default all of them. Fails
/// for a range that the service would not scan, because the service itself does not report that.
[[nodiscard]] Result<SectorRange> checkedScanRange(quint64 capacity, const std::optional<quint64> &first,
                                                   const std::optional<quint64> &last);

enum class ScanState {
    Idle = 0,
    Running = 1,
    Failed = 2, ///< the drive could not be opened
};

struct ScanStatus
{
    qint32 drive = 0;
    ScanState state = ScanState::Idle;
    qint32 percent = 0;
    quint64 firstSector = 0;
    quint64 currentSector = 0; ///< the last one read
    QDateTime time; ///< local time of the scan's start, later of its end; invalid if there was none
    QVector<SectorRange> badRanges;

    [[nodiscard]] bool hasRun() const { return state == ScanState::Running || time.isValid(); }
    /// Returns whether the latest scan has ended at the last sector of its range. The range's end is not
    /// reported, so the percentage is compared with the one that the service computes for a last sector.
    [[nodiscard]] bool isComplete() const;
};

[[nodiscard]] std::optional<QVector<ScanStatus>> parseScanStatus(const QString &reply);

/// The service stores any number, and never acts on an unknown one.
enum class ScheduleKind { None = 0, Once = 1, Daily = 2, Weekly = 3, Unknown };

struct ScheduleEntry
{
    qint32 drive = 0;
    ScheduleKind kind = ScheduleKind::None;
    qint32 weekday = 0; ///< 0 Monday to 6 Sunday, for Weekly
    QDate date;         ///< for Once
    QTime time;
};

/// A date or time that is not set or does not exist is invalid in the entry.
[[nodiscard]] std::optional<QVector<ScheduleEntry>> parseSchedule(const QString &reply);

} // namespace client
