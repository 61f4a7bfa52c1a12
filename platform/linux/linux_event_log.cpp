// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/linux_event_log.h"

#include "platform/program_name.h"

#include <QFileInfo>
#include <QVector>

#include <sys/uio.h>
#include <syslog.h>

#define SD_JOURNAL_SUPPRESS_LOCATION // the place in the source is of no use to an administrator
#include <systemd/sd-journal.h>

namespace {

constexpr char kJournalSocket[] = "/run/systemd/journal/socket";

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

QVector<QByteArray> journalFields(const Event &event)
{
    QVector<QByteArray> fields{
        "MESSAGE=" + event.text.toUtf8(),
        "PRIORITY=" + QByteArray::number(priorityOf(event.type)),
        "SYSLOG_FACILITY=" + QByteArray::number(LOG_FAC(LOG_DAEMON)),
        QByteArray("SYSLOG_IDENTIFIER=") + kProgramName,
        "HALVEX_SOURCE=" + event.source.toUtf8(),
        "HALVEX_TYPE=" + QByteArray::number(int(event.type)),
        "HALVEX_CATEGORY=" + QByteArray::number(event.category),
        "HALVEX_ID=" + QByteArray::number(event.id),
    };
    if (!event.data.isEmpty())
        fields.append("HALVEX_DATA=" + event.data);
    return fields;
}

/// sd_journal_sendv(3) also reports success where there is no journal.
bool sendToJournal(const Event &event)
{
    if (!QFileInfo::exists(QLatin1String(kJournalSocket)))
        return false;
    QVector<QByteArray> fields = journalFields(event);
    QVector<iovec> parts;
    for (QByteArray &field : fields)
        parts.append({field.data(), std::size_t(field.size())});
    return ::sd_journal_sendv(parts.constData(), parts.size()) == 0;
}

} // namespace

void LinuxEventLog::report(const Event &event)
{
    if (!sendToJournal(event)) {
        syslog(LOG_DAEMON | priorityOf(event.type), "%s: %s", qUtf8Printable(event.source),
               qUtf8Printable(event.text));
    }
}
