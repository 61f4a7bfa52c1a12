// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/event_log.h"

/// The event log as messages of the daemon facility. syslog(3) has no place for an entry's category, id and
/// data.
class SyslogEventLog : public EventLog
{
public:
    void report(const Event &event) override;
};
