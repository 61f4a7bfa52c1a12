// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "service/log_routes.h"

#include "platform/event_log.h"
#include "platform/program_name.h"

#include <QDateTime>
#include <QMutexLocker>
#include <QScopedValueRollback>

#include <cstdio>

namespace {

/// The system calls the handler without a context.
LogRoutes *theRoutes = nullptr;

/// Set while this thread handles a message; a message from within goes to the usual place only.
thread_local bool isHandling = false;

const char *levelName(QtMsgType type)
{
    switch (type) {
    case QtDebugMsg:
        return "debug";
    case QtInfoMsg:
        return "info";
    case QtWarningMsg:
        return "warning";
    case QtCriticalMsg:
        return "critical";
    case QtFatalMsg:
        return "fatal";
    }
    return "";
}

bool isWarningOrWorse(QtMsgType type)
{
    return type == QtWarningMsg || type == QtCriticalMsg || type == QtFatalMsg;
}

/// Returns `text` as one line without control characters, so that no message can look like two.
QByteArray oneLine(const QString &text)
{
    QByteArray line;
    for (const char byte : text.toUtf8()) {
        const auto code = quint8(byte);
        if (code < 0x20 || code == 0x7F)
            line += "\\x" + QByteArray::number(code, 16).rightJustified(2, '0');
        else
            line += byte;
    }
    return line;
}

} // namespace

LogRoutes::LogRoutes()
{
    Q_ASSERT(!theRoutes);
    theRoutes = this;
    m_usual = qInstallMessageHandler(handle);
}

LogRoutes::~LogRoutes()
{
    qInstallMessageHandler(m_usual);
    theRoutes = nullptr;
}

void LogRoutes::addEventLog(EventLog &eventLog)
{
    const QMutexLocker lock(&m_mutex);
    m_eventLog = &eventLog;
}

void LogRoutes::addFile(const QString &path)
{
    const QMutexLocker lock(&m_mutex);
    m_file.emplace(path);
}

void LogRoutes::handle(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    LogRoutes &routes = *theRoutes;
    if (!isHandling) {
        const QScopedValueRollback<bool> handling(isHandling, true);
        const QMutexLocker lock(&routes.m_mutex);
        routes.writeLine(type, context.category, text);
        routes.reportEvent(type, text);
    }
    routes.m_usual(type, context, text); // ends the process after a fatal message
}

void LogRoutes::reportEvent(QtMsgType type, const QString &text)
{
    if (!m_eventLog || !isWarningOrWorse(type) || !m_filter.admits(text, std::chrono::steady_clock::now()))
        return;
    const EventType eventType = type == QtWarningMsg ? EventType::Warning : EventType::Error;
    m_eventLog->report(
        {QString::fromLatin1(kServiceName), eventType, 0, 0, QString::fromUtf8(oneLine(text)), {}});
}

void LogRoutes::writeLine(QtMsgType type, const char *category, const QString &text)
{
    if (!m_file)
        return;
    const QByteArray time = QDateTime::currentDateTime().toString(Qt::ISODateWithMs).toLatin1();
    const Result<void> written =
        m_file->append(time + ' ' + levelName(type) + ' ' + category + ": " + oneLine(text));
    if (!written && !m_isFileFailing) // not as a message: that would come back here
        std::fprintf(stderr, "LogFile: %s\n", written.failure().text.toLocal8Bit().constData());
    m_isFileFailing = !written;
}
