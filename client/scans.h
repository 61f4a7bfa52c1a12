// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDate>
#include <QDateTime>
#include <QString>
#include <QTime>
#include <QVector>

#include <optional>

namespace client {

/// Scans count sectors of this many bytes, whatever the drive's own sectors are.
inline constexpr quint64 kScanSectorBytes = 512;

/// Sectors, both ends inclusive.
struct BadRange
{
    quint64 first = 0;
    quint64 last = 0;
};

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
    quint64 currentSector = 0; ///< the last one handled
    QDateTime time;            ///< when the scan began, later when it ended; invalid when none was
    QVector<BadRange> badRanges;

    [[nodiscard]] bool hasRun() const { return state == ScanState::Running || time.isValid(); }
};

[[nodiscard]] std::optional<QVector<ScanStatus>> parseScanStatus(const QString &reply);

/// The service keeps a number that is no kind, and never acts on it.
enum class ScheduleKind { None = 0, Once = 1, Daily = 2, Weekly = 3, Unknown };

struct ScheduleEntry
{
    qint32 drive = 0;
    ScheduleKind kind = ScheduleKind::None;
    qint32 weekday = 0; ///< 0 Monday to 6 Sunday, for Weekly
    QDate date;         ///< for Once
    QTime time;
};

/// A date or time that was never set, or set to nonsense, is invalid in the entry.
[[nodiscard]] std::optional<QVector<ScheduleEntry>> parseSchedule(const QString &reply);

} // namespace client
