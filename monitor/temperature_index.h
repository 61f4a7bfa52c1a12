// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/temperature_record.h"

#include <QVector>

#include <functional>

/// Records of the log by their place in it.
struct RecordRange
{
    qint64 begin = 0;
    qint64 end = 0; ///< the first one after the range
};

/// The part of the log that a history consists of: the records in `ranges` that are not earlier than `from`.
struct HistorySelection
{
    QVector<RecordRange> ranges;
    temperature_record::Stamp from = temperature_record::kNoDate;
    qint64 textBytes = 0; ///< size of the history in UTF-8
};

/// Keeps the earliest and the latest moment of each block of the log, so that a query reads only the blocks
/// that it returns records of and those that one end of its period lies in. Makes no assumption about the
/// order of the records.
class TemperatureIndex
{
public:
    static constexpr int kBlockRecords = 8192; ///< 64 KiB

    explicit TemperatureIndex(int blockRecords = kBlockRecords)
        : m_blockRecords(blockRecords)
    {}

    /// Returns the number of records that are indexed.
    [[nodiscard]] qint64 size() const { return m_size; }

    /// Adds `count` records, which follow those that are indexed.
    void append(const char *records, qint64 count);

    /// Returns the bytes of the records in `range`, fewer if they cannot be read.
    using ReadRecords = std::function<QByteArray(const RecordRange &range)>;

    /// Selects the records from the start of the log to the first one later than `to`, this one included,
    /// that are not earlier than `from`. If they exceed `maxTextBytes`, the oldest blocks are left out.
    [[nodiscard]] HistorySelection select(temperature_record::Stamp from, temperature_record::Stamp to,
                                          const ReadRecords &read, qint64 maxTextBytes) const;

private:
    struct Block
    {
        temperature_record::Stamp earliest = ~temperature_record::Stamp{0};
        temperature_record::Stamp latest = 0;
        qint64 textBytes = 0;
    };
    struct Part; ///< of a selection, within one block

    [[nodiscard]] Part partOf(int block, temperature_record::Stamp from, temperature_record::Stamp to,
                              const ReadRecords &read) const;

    int m_blockRecords;
    qint64 m_size = 0;
    QVector<Block> m_blocks;
};
