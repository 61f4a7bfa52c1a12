// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "protocol/reply_source.h"

#include <QByteArray>

#include <memory>

/// A reply on its way to a console: scrambles the text of a source as its line is written.
class ReplyLine
{
public:
    /// The largest chunk that next() returns, in bytes.
    static constexpr int kMaxChunkBytes = 32 * 1024;

    /// `offset` is drawn for this line.
    ReplyLine(std::unique_ptr<ReplySource> source, int offset);

    /// Returns the size of the next chunk in bytes; 0 at the end of the line.
    [[nodiscard]] int nextSize() const;

    /// Returns the next chunk; a null array if the reply cannot be completed.
    [[nodiscard]] QByteArray next();

    [[nodiscard]] qint64 heldBytes() const { return m_source->heldBytes(); }

private:
    std::unique_ptr<ReplySource> m_source;
    const int m_offset;
    bool m_isBegun = false;
    qint64 m_textLeft; ///< bytes of text that have not been scrambled yet
};
