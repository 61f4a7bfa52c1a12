// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace client {

/// Splits a service's bytes into lines. A line announces its length in its first digits, so bytes that cannot
/// be a line are detected early, and the memory for a line has a limit.
class LineReader
{
public:
    /// Enough for a temperature history of decades.
    static constexpr quint32 kMaximumLine = 512U * 1024U * 1024U;

    void append(const QByteArray &bytes) { m_buffer += bytes; }

    /// Returns the next complete line without its end, or nothing if there is none.
    [[nodiscard]] std::optional<QByteArray> takeLine();

    /// Returns whether the bytes cannot be the beginning of a line; this is final.
    [[nodiscard]] bool isBroken() const { return m_isBroken; }

    /// Returns the bytes of an incomplete line, for messages.
    [[nodiscard]] const QByteArray &pending() const { return m_buffer; }

private:
    [[nodiscard]] std::optional<quint32> announcedLength();

    QByteArray m_buffer;
    int m_searched = 0; ///< bytes known to hold no line end
    bool m_isBroken = false;
};

/// Returns the text of a scrambled line, or nothing if a service would never send it.
[[nodiscard]] std::optional<QString> plainText(const QByteArray &line);

} // namespace client
