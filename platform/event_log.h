// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>

/// The kinds of event log entries, with the numbers of the Windows event log (winnt.h).
enum class EventType : quint16 {
    Success = 0,
    Error = 1,
    Warning = 2,
    Information = 4,
};

struct Event
{
    QString source;
    EventType type = EventType::Success;
    quint16 category = 0;
    quint32 id = 0;
    QString text;
    QByteArray data; ///< raw bytes stored with the entry; mostly empty
};

/// The system's event log. Event loop's thread only. An entry that cannot be written is dropped silently, so
/// that no caller fails because of it.
class EventLog
{
public:
    EventLog() = default;
    EventLog(const EventLog &) = delete;
    EventLog &operator=(const EventLog &) = delete;
    virtual ~EventLog() = default;

    virtual void report(const Event &event) = 0;
};
