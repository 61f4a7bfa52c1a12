// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/event_log.h"

/// The journal where there is one, with a field for each part of an event; else syslog.
class LinuxEventLog : public EventLog
{
public:
    void report(const Event &event) override;
};
