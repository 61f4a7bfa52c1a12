// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/greeting.h"
#include "client/history.h"
#include "client/inventory.h"
#include "client/scans.h"
#include "client/short_replies.h"

#include <QDateTime>
#include <QString>

#include <chrono>
#include <functional>
#include <optional>

namespace client {

/// A request line with the parser of its reply, for Conversation::ask().
template <typename T>
struct Request
{
    QString line;
    std::function<std::optional<T>(const QString &reply)> parse; ///< nothing for a reply that does not fit
    /// The time that the service may take for the reply; 0: the time of the conversation.
    std::chrono::milliseconds allowance{0};
    /// True: the line is sent even if the service is paused or detects drives, and any reply is accepted.
    bool isRaw = false;
    bool hasReply = true;
};

namespace requests {

/// A request whose reply is one fixed word.
using Done = Request<QString>;

[[nodiscard]] Request<QVector<Drive>> allDrives();
[[nodiscard]] Request<Drive> drive(qint32 number);
[[nodiscard]] Request<QVector<Attribute>> attributes(qint32 drive);
[[nodiscard]] Request<QVector<DriveAttribute>> allAttributes();
[[nodiscard]] Request<QVector<Volume>> allVolumes();
[[nodiscard]] Request<qint32> driveCount();
[[nodiscard]] Request<TemperatureHistory> temperatures(const QDateTime &from, const QDateTime &to);

[[nodiscard]] Request<QVector<ScanStatus>> scans();
/// Sectors of kScanSectorSize, both ends inclusive; the block in bytes.
[[nodiscard]] Done startScan(qint32 drive, qint32 blockSize, quint64 firstSector, quint64 lastSector);
[[nodiscard]] Done stopScan(qint32 drive);
[[nodiscard]] Request<QVector<ScheduleEntry>> schedule();
/// The reply is the schedule after the change. The service ignores an entry that does not fit.
[[nodiscard]] Request<QVector<ScheduleEntry>> setSchedule(const ScheduleEntry &entry);

/// Sets all 18 settings at once.
[[nodiscard]] Done setSettings(const ServiceSettings &settings);
/// Sends a test mail with the mail settings in `settings`.
[[nodiscard]] Request<MailOutcome> testMail(const ServiceSettings &settings, const QString &body);
/// Services of older versions refuse it.
[[nodiscard]] Request<ServiceTime> serviceTime();
[[nodiscard]] Request<Version> version();
[[nodiscard]] Request<Intervals> setIntervals(qint32 smartMilliseconds, qint32 freeSpaceMilliseconds);

/// Starts a new detection of the drives.
[[nodiscard]] Done detect();
/// Reads drives and volumes; answered when that is done.
[[nodiscard]] Done refresh();
[[nodiscard]] Request<qint32> userCount();
[[nodiscard]] Request<UserAccount> user(qint32 index);
[[nodiscard]] Request<Rights> authenticate(const QString &user, const QString &password);

/// Sends `line` unchanged and accepts any reply.
[[nodiscard]] Request<QString> raw(const QString &line);

} // namespace requests

/// Returns whether a service reads `text` back as one field of a request and reports it unchanged: it has no
/// separator, no line end and no placeholder of the greeting's template.
[[nodiscard]] bool isPlainField(const QString &text);

} // namespace client
