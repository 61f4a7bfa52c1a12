// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/scans.h"

#include "client/field_reader.h"
#include "wire/separators.h"

namespace client {

namespace {

constexpr int kFieldsBeforeRanges = 6;

std::optional<SectorRange> rangeItem(const QString &item)
{
    FieldReader fields(item.split(QLatin1Char('-')));
    SectorRange range;
    range.first = fields.number<quint64>();
    range.last = fields.number<quint64>();
    if (!fields.fits() || range.first > range.last)
        return std::nullopt;
    return range;
}

std::optional<ScanStatus> statusItem(const QString &item)
{
    QStringList texts = item.split(QLatin1Char(';'));
    QStringList rangeTexts;
    if (texts.size() == kFieldsBeforeRanges + 1)
        rangeTexts = texts.takeLast().split(QLatin1Char(','));
    const auto ranges = parseItems(rangeTexts, rangeItem);
    FieldReader fields(texts);
    ScanStatus status;
    status.drive = fields.number<qint32>(0);
    status.state = ScanState(fields.number<qint32>(0, 2));
    status.percent = fields.number<qint32>(0, 100);
    status.firstSector = quint64(fields.number<qint64>(0));
    // -1 is the last sector of a drive without capacity.
    status.currentSector = quint64(std::max<qint64>(0, fields.number<qint64>(-1)));
    status.time = fields.moment();
    if (!fields.fits() || !ranges)
        return std::nullopt;
    status.badRanges = *ranges;
    // A drive that was never scanned has a date in 1980, whose two digits are those of 2080.
    if (status.time.date() == QDate(2080, 1, 1))
        status.time = QDateTime();
    return status;
}

ScheduleKind kindOf(qint32 number)
{
    const bool isKnown = number >= 0 && number < qint32(ScheduleKind::Unknown);
    return isKnown ? ScheduleKind(number) : ScheduleKind::Unknown;
}

std::optional<ScheduleEntry> scheduleItem(const QString &item)
{
    FieldReader fields(item.split(kFieldSeparator));
    ScheduleEntry entry;
    entry.drive = fields.number<qint32>(0);
    entry.kind = kindOf(fields.number<qint32>());
    entry.weekday = fields.number<qint32>();
    const QString date = fields.text();
    const QString time = fields.text();
    const QVector<int> dateParts = digitPairs(date, 3);
    const QVector<int> timeParts = digitPairs(time, 3);
    const bool hasDateText = !date.isEmpty();
    const bool hasTimeText = !time.isEmpty();
    if (!fields.fits() || hasDateText == dateParts.isEmpty() || hasTimeText == timeParts.isEmpty())
        return std::nullopt;
    if (hasDateText)
        entry.date = QDate(2000 + dateParts.at(0), dateParts.at(1), dateParts.at(2));
    if (hasTimeText)
        entry.time = QTime(timeParts.at(0), timeParts.at(1), timeParts.at(2));
    return entry;
}

} // namespace

bool ScanStatus::isComplete() const
{
    if (state != ScanState::Idle || !hasRun() || currentSector < firstSector)
        return false;
    if (percent == 100)
        return true;
    const auto sectors = double(currentSector - firstSector);
    const double step = 100.0 / sectors;
    return sectors > 0 && percent == qint32(sectors * step);
}

Result<SectorRange> checkedScanRange(quint64 capacity, const std::optional<quint64> &first,
                                     const std::optional<quint64> &last)
{
    const auto refused = [](const QString &reason) { return Failure{FailureKind::Refused, reason}; };
    const quint64 sectors = capacity / quint64(kScanSectorSize);
    if (sectors == 0 && (!first || !last))
        return refused(QStringLiteral("the size of the drive is unknown: both sectors are needed"));
    const SectorRange range{first.value_or(0), last.value_or(sectors - 1)};
    if (range.first > range.last)
        return refused(QStringLiteral("the first sector is above the last"));
    if (sectors > 0 && range.last >= sectors)
        return refused(QStringLiteral("the last sector of the drive is %1").arg(sectors - 1));
    return range;
}

std::optional<QVector<ScanStatus>> parseScanStatus(const QString &reply)
{
    const auto payload = afterPrefix(reply, QStringLiteral("STATSCAN]!["));
    if (!payload)
        return std::nullopt;
    return parseItems(payload->isEmpty() ? QStringList() : payload->split(QLatin1Char('|')), statusItem);
}

std::optional<QVector<ScheduleEntry>> parseSchedule(const QString &reply)
{
    const auto payload = afterPrefix(reply, QStringLiteral("SCANSCHED"));
    if (!payload)
        return std::nullopt;
    if (payload->isEmpty())
        return QVector<ScheduleEntry>();
    const auto items = afterPrefix(*payload, kRequestSeparator);
    return items ? parseItems(items->split(kRequestSeparator), scheduleItem) : std::nullopt;
}

} // namespace client
