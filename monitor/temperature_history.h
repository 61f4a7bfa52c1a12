// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/date_time_text.h"
#include "disk/workers.h"
#include "monitor/fault_state.h"
#include "monitor/temperature_index.h"
#include "monitor/temperature_log.h"
#include "platform/file_stamp.h"

#include <QFile>
#include <QObject>

#include <functional>
#include <memory>
#include <optional>
#include <vector>

/// Both ends are local time. An invalid date is before every valid one; an invalid time of day is midnight.
struct HistoryPeriod
{
    DateAndTime from;
    DateAndTime to;
};

/// Reads the records of one selection, piece by piece. Keeps the log open.
class HistoryReader
{
public:
    /// An empty history.
    HistoryReader() = default;
    HistoryReader(std::shared_ptr<QFile> log, HistorySelection selection);

    /// Returns the size of the history in UTF-8, in bytes.
    [[nodiscard]] qint64 textBytes() const { return m_selection.textBytes; }

    /// Returns the memory that the reader keeps, in bytes.
    [[nodiscard]] qint64 heldBytes() const { return m_selection.ranges.size() * qint64(sizeof(RecordRange)); }

    /// Returns some more of the history, in UTF-8; empty at the end, or if the log can no longer be read.
    [[nodiscard]] QByteArray next();

private:
    std::shared_ptr<QFile> m_log;
    HistorySelection m_selection;
    int m_range = 0;     ///< index of the range that is being read
    qint64 m_record = 0; ///< place of the next record
};

/// The temperature log: appends records, in order, on a worker thread, and finds the records of a period by
/// an index. The index is built in slices on the event loop, extended by append(), and built anew when the
/// file has been changed by somebody else. Event loop's thread only.
class TemperatureHistory : public QObject
{
    Q_OBJECT

public:
    struct Sizes
    {
        int blockRecords = TemperatureIndex::kBlockRecords;
        int sliceRecords = 512 * 1024; ///< indexed in one turn of the event loop
        qint64 maxTextBytes = qint64{1} << 62;
    };

    /// `path` names the log, which need not exist. If it is not absolute, nothing is read or written.
    /// `workers` outlives this object, which outlives the event loop's last turn.
    TemperatureHistory(QString path, const Sizes &sizes, Workers &workers, QObject *parent = nullptr);

    /// Starts to index the log, so that the first query need not wait for it.
    void prepare();

    /// Appends a record for each reading; see appendTemperatures(). Records are lost, and a fault is logged,
    /// while the disk does not answer within the limit of a request.
    void append(const QVector<TemperatureReading> &readings, const QDateTime &now);

    /// Receives the history of a period.
    using Found = std::function<void(HistoryReader reader)>;

    /// Finds the records from `from` to `to` and the first one later than `to`, where a history ends.
    /// `found` is called once: before the function returns, or when earlier records have been appended and
    /// the log has been indexed.
    void find(const HistoryPeriod &period, Found found);

private:
    struct Query
    {
        HistoryPeriod period;
        Found found;
    };

    /// What a worker has done to the log.
    struct Appended
    {
        FileStamp before;
        FileStamp after;
        Result<void> outcome;
    };

    void endAppend(const Appended &appended, const QDateTime &when);
    [[nodiscard]] bool isIndexCurrent() const;
    void startIndexing();
    void indexSlice();
    void finishIndexing();
    bool indexRecords(QFile &log, qint64 count);
    [[nodiscard]] std::shared_ptr<QFile> openLog();
    [[nodiscard]] HistoryReader readerOf(const HistoryPeriod &period);

    const QString m_path;
    const Sizes m_sizes;
    Workers &m_workers;
    int m_pendingAppends = 0;
    TemperatureIndex m_index;
    std::optional<FileStamp> m_stamp; ///< of the file that the index describes
    std::weak_ptr<QFile> m_openLog;   ///< shared by the readers of that file
    std::shared_ptr<QFile> m_logBeingIndexed;
    std::vector<Query> m_waiting; ///< for records that are being appended, and for the end of indexing
    FaultState m_reading{QStringLiteral("Reading the temperature log")};
    FaultState m_writing{QStringLiteral("Writing the temperature log")};
};
