// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QByteArray>
#include <QString>

/// The text of one reply in UTF-8. It is produced piece by piece while its connection sends it, and destroyed
/// with the connection. Event loop's thread only.
class ReplySource
{
public:
    /// A reply that consists of `text`.
    explicit ReplySource(const QString &text)
        : ReplySource(text, 0)
    {}
    ReplySource(const ReplySource &) = delete;
    ReplySource &operator=(const ReplySource &) = delete;
    virtual ~ReplySource() = default;

    /// Returns the size of the whole text in bytes.
    [[nodiscard]] qint64 length() const { return m_length; }

    /// Returns the next bytes: `maxBytes` of them, or all that are left if these are fewer. Returns fewer if
    /// the text cannot be completed.
    [[nodiscard]] QByteArray next(int maxBytes);

    /// Returns the memory that the source keeps, in bytes.
    [[nodiscard]] qint64 heldBytes() const { return m_ready.size() + keptBytes(); }

protected:
    /// A reply that consists of `head` and `tailLength` bytes of further pieces.
    ReplySource(const QString &head, qint64 tailLength)
        : m_ready(head.toUtf8())
        , m_length(m_ready.size() + tailLength)
        , m_left(m_length)
    {}

private:
    /// Returns the next piece after the head; empty if there is none.
    [[nodiscard]] virtual QByteArray nextPiece() { return {}; }
    /// Returns the memory that is kept for further pieces, in bytes.
    [[nodiscard]] virtual qint64 keptBytes() const { return 0; }

    QByteArray m_ready; ///< produced, not returned yet
    const qint64 m_length;
    qint64 m_left; ///< bytes that next() has not returned yet
};
