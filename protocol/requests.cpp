// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/requests.h"

#include "protocol/logging.h"
#include "wire/separators.h"

namespace {

constexpr int kSettingItems = 18;
constexpr int kScheduleItems = 5; // the fifth must be there and is not read
constexpr int kMailTestItems = 9;

/// The items of the one field that several requests pack their values in.
class Items
{
public:
    explicit Items(const QString &field)
        : m_items(field.split(kFieldSeparator))
    {}

    [[nodiscard]] int size() const { return m_items.size(); }
    [[nodiscard]] const QString &text(int item) const { return m_items[item]; }
    [[nodiscard]] qint32 number(int item) const { return m_items[item].toInt(); }
    [[nodiscard]] qint64 longNumber(int item) const { return m_items[item].toLongLong(); }
    [[nodiscard]] bool isOn(int item) const { return number(item) != 0; }

private:
    QStringList m_items;
};

} // namespace

namespace request {

None none(const Fields & /*fields*/)
{
    return {};
}

qint32 listIndex(const Fields &fields)
{
    return fields.number(1);
}

QString text(const Fields &fields)
{
    return fields.text(1);
}

FindingName findingName(const Fields &fields)
{
    return {fields.text(1), fields.text(2), fields.text(3)};
}

Credentials credentials(const Fields &fields)
{
    return {fields.text(1), fields.text(2)};
}

VolumePlace volumePlace(const Fields &fields)
{
    if (fields.size() < 3)
        return {};
    return {fields.number(1), fields.number(2)};
}

std::optional<PollIntervals> pollIntervals(const Fields &fields)
{
    const PollIntervals intervals{fields.number(1), fields.number(2)};
    if (intervals.smart < 1 || intervals.freeSpace < 1)
        return std::nullopt;
    return intervals;
}

/// The order of the items is the protocol's own.
std::optional<ServiceSettings> settingsChange(const Fields &fields)
{
    const Items items(fields.text(1));
    if (items.size() < kSettingItems)
        return std::nullopt;
    ServiceSettings change;
    change.port = quint32(items.number(0));
    change.smartPollInterval = items.longNumber(1);
    change.freeSpacePollInterval = items.longNumber(2);
    change.popupNotify = items.isOn(3);
    change.emailNotify = items.isOn(4);
    change.logSysEvLog = items.isOn(5);
    change.smtpFrom = items.text(6);
    change.smtpTo = items.text(7);
    change.smtpSubj = items.text(8);
    change.smtpServer = items.text(9);
    change.smtpNeedAuth = items.isOn(10);
    change.smtpUser = items.text(11);
    change.smtpPass = items.text(12);
    change.smtpPort = items.number(13);
    change.wTemp = items.number(14);
    change.cTemp = items.number(15);
    change.warnExtTask = items.text(16);
    change.critExtTask = items.text(17);
    return change;
}

std::optional<ScheduleChange> scheduleChange(const Fields &fields)
{
    const Items items(fields.text(1));
    qCDebug(lcProtocol, "parseSetScanSched Numbers of params: %d", items.size());
    if (items.size() != kScheduleItems)
        return std::nullopt;
    const DateAndTime moment = parseDateTime(items.text(3));
    return ScheduleChange{items.number(0),
                          {ScheduleKind(items.number(1)), items.number(2), moment.date, moment.time}};
}

ScanStart scanStart(const Fields &fields)
{
    return {{fields.number(1), fields.number(2), fields.longNumber(3), fields.longNumber(4)}, fields.text(1)};
}

ScanStop scanStop(const Fields &fields)
{
    return {fields.number(1), fields.text(1)};
}

HistoryPeriod historyPeriod(const Fields &fields)
{
    return {parseDateTime(fields.text(1)), parseDateTime(fields.text(2))};
}

std::optional<MailTest> mailTest(const Fields &fields)
{
    const Items items(fields.text(1));
    if (items.size() < kMailTestItems)
        return std::nullopt;
    return MailTest{quint16(items.number(0)),
                    items.isOn(1),
                    items.text(2),
                    items.text(3),
                    items.text(4),
                    items.text(5),
                    items.text(6),
                    items.text(7),
                    items.text(8)};
}

} // namespace request
