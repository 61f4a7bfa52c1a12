// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/syslog_event_log.h"

#include <syslog.h>

namespace {

int priorityOf(EventType type)
{
    switch (type) {
    case EventType::Error:
        return LOG_ERR;
    case EventType::Warning:
        return LOG_WARNING;
    case EventType::Success:
    case EventType::Information:
        break;
    }
    return LOG_INFO;
}

} // namespace

void SyslogEventLog::report(const Event &event)
{
    syslog(LOG_DAEMON | priorityOf(event.type), "%s: %s", qUtf8Printable(event.source),
           qUtf8Printable(event.text));
}
