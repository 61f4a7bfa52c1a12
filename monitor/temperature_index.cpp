// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "monitor/temperature_index.h"

#include <algorithm>

using temperature_record::Decoder;
using temperature_record::Stamp;

namespace {

qint64 textSize(const Decoder::Record &decoded, const char *record)
{
    return decoded.isPlain ? temperature_record::kSize : temperature_record::text(record).size();
}

} // namespace

struct TemperatureIndex::Part
{
    RecordRange range;
    qint64 textBytes = 0;
    bool isLast = false; ///< the history ends in this block
};

void TemperatureIndex::append(const char *records, qint64 count)
{
    Decoder decoder;
    const char *const end = records + count * temperature_record::kSize;
    for (const char *record = records; record != end; record += temperature_record::kSize, ++m_size) {
        if (m_size % m_blockRecords == 0)
            m_blocks.append(Block());
        Block &block = m_blocks.last();
        const Decoder::Record decoded = decoder.decode(record);
        block.earliest = std::min(block.earliest, decoded.stamp);
        block.latest = std::max(block.latest, decoded.stamp);
        block.textBytes += textSize(decoded, record);
    }
}

HistorySelection TemperatureIndex::select(Stamp from, Stamp to, const ReadRecords &read,
                                          qint64 maxTextBytes) const
{
    QVector<Part> parts;
    HistorySelection selection{{}, from, 0};
    for (int block = 0; block < m_blocks.size(); ++block) {
        const Part part = partOf(block, from, to, read);
        if (part.textBytes > 0)
            parts.append(part);
        selection.textBytes += part.textBytes;
        if (part.isLast)
            break;
    }
    for (const Part &part : qAsConst(parts)) {
        if (selection.textBytes > maxTextBytes)
            selection.textBytes -= part.textBytes;
        else if (!selection.ranges.isEmpty() && selection.ranges.last().end == part.range.begin)
            selection.ranges.last().end = part.range.end;
        else
            selection.ranges.append(part.range);
    }
    return selection;
}

TemperatureIndex::Part TemperatureIndex::partOf(int block, Stamp from, Stamp to,
                                                const ReadRecords &read) const
{
    const Block &summary = m_blocks[block];
    const qint64 begin = qint64(block) * m_blockRecords;
    Part part{{begin, std::min(begin + m_blockRecords, m_size)}, 0, summary.latest > to};
    if (summary.latest < from && !part.isLast)
        return part;
    if (summary.earliest >= from && !part.isLast) {
        part.textBytes = summary.textBytes;
        return part;
    }
    const QByteArray records = read(part.range);
    if (records.size() < (part.range.end - begin) * temperature_record::kSize)
        part.isLast = true; // the rest is unreadable
    part.range.end = begin;
    Decoder decoder;
    for (int i = 0; i + temperature_record::kSize <= records.size(); i += temperature_record::kSize) {
        const char *const record = records.constData() + i;
        const Decoder::Record decoded = decoder.decode(record);
        ++part.range.end;
        if (decoded.stamp >= from)
            part.textBytes += textSize(decoded, record);
        if (decoded.stamp > to)
            break;
    }
    return part;
}
