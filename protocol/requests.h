// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/command_target.h"

#include <QString>
#include <QStringList>

#include <optional>

/// Parses the fields of requests into values. Numbers are decimal; anything that is not a number, or does not
/// fit, is 0. Missing fields are empty texts. Indices are not checked here.
namespace request {

/// The fields of a request by their place; field 0 is the command word.
class Fields
{
public:
    /// `fields` has at least one.
    explicit Fields(QStringList fields)
        : m_fields(std::move(fields))
    {}

    [[nodiscard]] int size() const { return m_fields.size(); }
    [[nodiscard]] QString text(int field) const { return m_fields.value(field); }
    [[nodiscard]] qint32 number(int field) const { return text(field).toInt(); }
    [[nodiscard]] qint64 longNumber(int field) const { return text(field).toLongLong(); }

private:
    QStringList m_fields;
};

struct Credentials
{
    QString user;
    QString password;
};

struct VolumePlace
{
    qint32 device = 0;
    qint32 volume = 0; ///< in the list of the device
};

/// The replies repeat the device as it was sent.
struct ScanStart
{
    ScanRequest scan;
    QString device;
};
struct ScanStop
{
    qint32 index = 0;
    QString device;
};

/// A request that has no fields, or none that is read.
struct None
{
};

[[nodiscard]] None none(const Fields &fields);
/// Returns field 1 as an index.
[[nodiscard]] qint32 listIndex(const Fields &fields);
[[nodiscard]] Credentials credentials(const Fields &fields);
/// Returns field 1.
[[nodiscard]] QString text(const Fields &fields);
[[nodiscard]] FindingName findingName(const Fields &fields);
/// With fewer than three fields both indices are 0, whatever the first contains.
[[nodiscard]] VolumePlace volumePlace(const Fields &fields);
/// Returns nothing if one of the intervals is below 1.
[[nodiscard]] std::optional<PollIntervals> pollIntervals(const Fields &fields);
/// Returns nothing if there are fewer than 18 items.
[[nodiscard]] std::optional<ServiceSettings> settingsChange(const Fields &fields);
/// Returns nothing for any number of items but five. Digits that are not numbers leave date or time invalid.
[[nodiscard]] std::optional<ScheduleChange> scheduleChange(const Fields &fields);
[[nodiscard]] ScanStart scanStart(const Fields &fields);
[[nodiscard]] ScanStop scanStop(const Fields &fields);
[[nodiscard]] HistoryPeriod historyPeriod(const Fields &fields);
/// Returns nothing if there are fewer than nine items.
[[nodiscard]] std::optional<MailTest> mailTest(const Fields &fields);

} // namespace request
