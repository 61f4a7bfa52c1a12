// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/date_time_text.h"

#include <QByteArray>

/// The records of the temperature log, as its history reads them.
namespace temperature_record {

inline constexpr int kSize = 8; ///< bytes

/// A moment as a number with the same order: year, month, day, hour, minute and second, a byte each with 33
/// added. Moments compare as the local clock showed them, without daylight saving.
using Stamp = quint64;

/// The stamp of an invalid date, which is before every valid one.
inline constexpr Stamp kNoDate = 0;

/// An invalid time of day counts as midnight.
[[nodiscard]] Stamp stampOf(const DateAndTime &moment);

/// Decodes one record after another.
class Decoder
{
public:
    struct Record
    {
        Stamp stamp;
        bool isPlain; ///< the text is the record's bytes
    };

    /// `record` points to kSize bytes.
    [[nodiscard]] Record decode(const char *record);

private:
    [[nodiscard]] bool isValidDate(quint64 dateBytes);

    quint64 m_validDate = ~quint64{0}; ///< the last valid date; neighbours mostly share theirs
};

/// Returns the record as text, in UTF-8. Bytes that are not ASCII were read as other characters, or as none.
[[nodiscard]] QByteArray text(const char *record);

} // namespace temperature_record
