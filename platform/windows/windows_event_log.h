// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/event_log.h"

/// The application log. No message file is registered for the sources, so viewers show the bare text.
class WindowsEventLog : public EventLog
{
public:
    void report(const Event &event) override;
};
