// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/rotating_log.h"
#include "service/repeat_filter.h"

#include <QMutex>
#include <QtGlobal>

#include <optional>

class EventLog;

/// Distributes the messages of the log categories while it exists: to the usual place (standard error, on
/// Windows the debugger), to an event log, and to a file. At most one object at a time; messages come from
/// any thread.
class LogRoutes
{
public:
    LogRoutes();
    ~LogRoutes();
    LogRoutes(const LogRoutes &) = delete;
    LogRoutes &operator=(const LogRoutes &) = delete;

    /// Reports warnings and worse in `eventLog` too, each text at most once an hour. The log must be usable
    /// from any thread, and outlive this object.
    void addEventLog(EventLog &eventLog);

    /// Writes all messages to the file at `path` too. A file that fails is reported on standard error when it
    /// starts to fail.
    void addFile(const QString &path);

private:
    static void handle(QtMsgType type, const QMessageLogContext &context, const QString &text);
    void reportEvent(QtMsgType type, const QString &text);
    void writeLine(QtMsgType type, const char *category, const QString &text);

    QtMessageHandler m_usual = nullptr;
    QMutex m_mutex; // guards all below
    EventLog *m_eventLog = nullptr;
    RepeatFilter m_filter;
    std::optional<RotatingLog> m_file;
    bool m_isFileFailing = false;
};
