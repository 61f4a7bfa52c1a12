// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "client/scans.h"
#include "wire/result.h"

namespace web {

/// Returns the schedule that the words of the schedule document describe: `kind` is none, once, daily or
/// weekly, `date` yyyy-MM-dd, `time` HH:mm or HH:mm:ss, `weekday` an English name. What the kind does not
/// need may be empty.
[[nodiscard]] Result<client::ScheduleEntry> scheduleEntry(qint32 drive, const QString &kind,
                                                          const QString &date, const QString &time,
                                                          const QString &weekday);

} // namespace web
