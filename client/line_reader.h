// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

namespace client {

/// Cuts what a service sends into lines, and notices early what cannot be one. Each line announces its own
/// length, so nothing is kept that was not announced, and an announcement has a limit.
class LineReader
{
public:
    /// A temperature history of decades. Anything longer is no reply.
    static constexpr quint32 kMaximumLine = 512U * 1024U * 1024U;

    void append(const QByteArray &bytes) { m_buffer += bytes; }

    /// The next whole line without its end, while one is there.
    [[nodiscard]] std::optional<QByteArray> takeLine();

    /// True once the bytes cannot be, or begin, a line. It stays so.
    [[nodiscard]] bool isBroken() const { return m_isBroken; }

    /// What is there of a line, for a message.
    [[nodiscard]] const QByteArray &pending() const { return m_buffer; }

private:
    [[nodiscard]] std::optional<quint32> announcedLength();

    QByteArray m_buffer;
    int m_searched = 0; ///< bytes known to hold no line end
    bool m_isBroken = false;
};

/// The text of a line as the service scrambles it; nothing for a line that it would never have made.
[[nodiscard]] std::optional<QString> plainText(const QByteArray &line);

} // namespace client
