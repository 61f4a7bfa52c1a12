// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QDateTime>
#include <QString>
#include <QStringList>

namespace client {

struct ScheduleEntry;
struct ServiceSettings;

/// The request lines, one function for each that takes more than its word.
namespace requests {

[[nodiscard]] QString driveInfo(qint32 drive);
[[nodiscard]] QString smartInfo(qint32 drive);
[[nodiscard]] QString userInfo(qint32 index);
[[nodiscard]] QString authenticate(const QString &user, const QString &password);
[[nodiscard]] QString setIntervals(qint32 smartMilliseconds, qint32 freeSpaceMilliseconds);
/// All 18 settings: the service takes them together or not at all.
[[nodiscard]] QString setSettings(const ServiceSettings &settings);
/// A test mail by the mail settings in `settings`.
[[nodiscard]] QString testMail(const ServiceSettings &settings, const QString &body);
[[nodiscard]] QString temperatures(const QDateTime &from, const QDateTime &to);
/// Sectors of 512 bytes, both ends inclusive; the block in bytes.
[[nodiscard]] QString startScan(qint32 drive, qint32 blockSize, quint64 firstSector, quint64 lastSector);
[[nodiscard]] QString stopScan(qint32 drive);
[[nodiscard]] QString setSchedule(const ScheduleEntry &entry);

} // namespace requests

/// True when a service would read `text` back as one field of a request, and report it unchanged: it holds
/// no separator, no line end, and no placeholder that the greeting's making would fill.
[[nodiscard]] bool isPlainField(const QString &text);

} // namespace client
