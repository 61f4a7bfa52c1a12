// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_history.h"

#include "monitor/logging.h"
#include "platform/regular_file.h"

#include <QDir>
#include <QTimer>

#include <algorithm>
#include <utility>

using temperature_record::Decoder;

namespace {

void logChange(const QString &text)
{
    if (!text.isEmpty())
        qCWarning(lcMonitor).noquote() << text;
}

/// The file is not mapped: touching a page that somebody has truncated away would end the process. After a
/// failure QFile::error() is set.
QByteArray readRecords(QFile &log, const RecordRange &range)
{
    log.unsetError();
    if (!log.seek(range.begin * temperature_record::kSize))
        return {};
    return log.read((range.end - range.begin) * temperature_record::kSize);
}

} // namespace

HistoryReader::HistoryReader(std::shared_ptr<QFile> log, HistorySelection selection)
    : m_log(std::move(log))
    , m_selection(std::move(selection))
{
    if (!m_selection.ranges.isEmpty())
        m_record = m_selection.ranges.first().begin;
}

QByteArray HistoryReader::next()
{
    constexpr qint64 kRecordsAtATime = 1524;
    QByteArray text;
    while (text.isEmpty() && m_range < m_selection.ranges.size()) {
        const RecordRange &range = m_selection.ranges[m_range];
        const qint64 end = std::min(m_record + kRecordsAtATime, range.end);
        const QByteArray records = readRecords(*m_log, {m_record, end});
        if (records.size() < (end - m_record) * temperature_record::kSize) {
            if (m_log->error() != QFileDevice::NoError)
                qCWarning(lcMonitor).noquote() << "A temperature history ends early:" << m_log->errorString();
            return {};
        }
        Decoder decoder;
        for (const char *p = records.constData(); p != records.constData() + records.size();
             p += temperature_record::kSize) {
            const Decoder::Record decoded = decoder.decode(p);
            if (decoded.stamp < m_selection.from)
                continue;
            if (decoded.isPlain)
                text.append(p, temperature_record::kSize);
            else
                text.append(temperature_record::text(p));
        }
        m_record = end;
        if (m_record == range.end && ++m_range < m_selection.ranges.size())
            m_record = m_selection.ranges[m_range].begin;
    }
    return text;
}

TemperatureHistory::TemperatureHistory(QString path, const Sizes &sizes, Workers &workers, QObject *parent)
    : QObject(parent)
    , m_path(std::move(path))
    , m_sizes(sizes)
    , m_workers(workers)
    , m_index(sizes.blockRecords)
{}

void TemperatureHistory::prepare()
{
    if (!m_logBeingIndexed && !isIndexCurrent())
        startIndexing();
}

void TemperatureHistory::append(const QVector<TemperatureReading> &readings, const QDateTime &now)
{
    auto worker = std::make_unique<FunctionWorker<Appended>>(m_path, [path = m_path, readings, now] {
        const FileStamp before = fileStamp(path);
        const auto outcome = appendTemperatures(path, readings, now);
        return Appended{before, fileStamp(path), outcome};
    });
    const auto *const appender = worker.get();
    ++m_pendingAppends;
    m_workers.start(std::move(worker), m_workers.limits().request, [this, appender, now](int, WorkEnd end) {
        const Appended none{{}, {}, Error{m_path + QStringLiteral(": the disk does not answer")}};
        endAppend(end == WorkEnd::Done ? *appender->value() : none, now);
    });
}

void TemperatureHistory::endAppend(const Appended &appended, const QDateTime &when)
{
    const Result<void> &outcome = appended.outcome;
    logChange(outcome ? m_writing.succeeded() : m_writing.failed(outcome.failure().text, when));
    if (m_stamp && *m_stamp == appended.before) {
        m_stamp = appended.after;
        const auto log = m_logBeingIndexed ? nullptr : openLog(); // indexing continues to the file's end
        if (log)
            indexRecords(*log, m_sizes.sliceRecords);
    }
    if (--m_pendingAppends > 0 || m_logBeingIndexed)
        return;
    for (Query &query : std::exchange(m_waiting, {}))
        find(query.period, std::move(query.found));
}

void TemperatureHistory::find(const HistoryPeriod &period, Found found)
{
    if (m_pendingAppends == 0)
        prepare();
    if (m_pendingAppends > 0 || m_logBeingIndexed)
        m_waiting.push_back({period, std::move(found)});
    else
        found(readerOf(period));
}

bool TemperatureHistory::isIndexCurrent() const
{
    return m_stamp && *m_stamp == fileStamp(m_path);
}

void TemperatureHistory::startIndexing()
{
    m_index = TemperatureIndex(m_sizes.blockRecords);
    m_openLog.reset();
    m_stamp = fileStamp(m_path);
    m_logBeingIndexed = openLog();
    if (m_logBeingIndexed)
        indexSlice();
}

void TemperatureHistory::indexSlice()
{
    if (indexRecords(*m_logBeingIndexed, m_sizes.sliceRecords))
        QTimer::singleShot(0, this, &TemperatureHistory::indexSlice);
    else
        finishIndexing();
}

/// Whoever waits gets what the file contained meanwhile, even if it has changed again.
void TemperatureHistory::finishIndexing()
{
    if (m_pendingAppends > 0) {
        m_logBeingIndexed.reset();
        return; // endAppend() answers the queries
    }
    const auto log = std::exchange(m_logBeingIndexed, nullptr); // is open for the readers below
    const std::vector<Query> waiting = std::exchange(m_waiting, {});
    std::vector<HistoryReader> readers;
    for (const Query &query : waiting)
        readers.push_back(readerOf(query.period));
    if (!isIndexCurrent())
        m_stamp.reset();
    for (std::size_t i = 0; i < waiting.size(); ++i)
        waiting[i].found(std::move(readers[i]));
}

/// Indexes up to `count` further records; false if there are no more. After a failed read the index is built
/// anew for the next query.
bool TemperatureHistory::indexRecords(QFile &log, qint64 count)
{
    const QByteArray records = readRecords(log, {m_index.size(), m_index.size() + count});
    if (log.error() != QFileDevice::NoError) {
        m_stamp.reset();
        logChange(m_reading.failed(m_path + QStringLiteral(": ") + log.errorString(),
                                   QDateTime::currentDateTime()));
        return false;
    }
    logChange(m_reading.succeeded());
    const qint64 whole = records.size() / temperature_record::kSize;
    m_index.append(records.constData(), whole);
    return whole == count;
}

/// Returns null if there is no log, or if it is not a regular file.
std::shared_ptr<QFile> TemperatureHistory::openLog()
{
    if (auto open = m_openLog.lock())
        return open;
    if (!QDir::isAbsolutePath(m_path))
        return nullptr;
    auto log = std::make_shared<QFile>(m_path);
    const auto opened = regular_file::open(*log, QIODevice::ReadOnly);
    if (opened) {
        m_openLog = log;
        return log;
    }
    if (opened.failure().kind == AccessError::Kind::Failed)
        logChange(m_reading.failed(m_path + QStringLiteral(": ") + opened.failure().text,
                                   QDateTime::currentDateTime()));
    return nullptr;
}

HistoryReader TemperatureHistory::readerOf(const HistoryPeriod &period)
{
    const std::shared_ptr<QFile> log = openLog();
    if (!log)
        return {};
    const auto read = [&log](const RecordRange &range) { return readRecords(*log, range); };
    HistorySelection selection =
        m_index.select(temperature_record::stampOf(period.from), temperature_record::stampOf(period.to), read,
                       m_sizes.maxTextBytes);
    return {log, std::move(selection)};
}
