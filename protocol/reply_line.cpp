// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/reply_line.h"

#include "wire/scrambling.h"

#include <algorithm>
#include <utility>

namespace {

constexpr char kLineEnd[] = "\r\n";
constexpr int kLineEndSize = 2;
constexpr int kHeaderSize = 10;
constexpr int kTextChunk = 8 * kPieceBytes;

/// Returns the number of characters of a line's body for `bytes` bytes of text.
constexpr int bodySize(int bytes)
{
    return (bytes + 2) / 3 * 8;
}

static_assert(kHeaderSize + bodySize(kTextChunk) + kLineEndSize <= ReplyLine::kMaxChunkBytes);

} // namespace

ReplyLine::ReplyLine(std::unique_ptr<ReplySource> source, int offset)
    : m_source(std::move(source))
    , m_offset(offset)
    , m_textLeft(m_source->length())
{}

int ReplyLine::nextSize() const
{
    if (m_isBegun && m_textLeft == 0)
        return 0;
    const int header = m_isBegun ? 0 : kHeaderSize;
    const int lineEnd = m_textLeft <= kTextChunk ? kLineEndSize : 0;
    return header + bodySize(int(std::min<qint64>(m_textLeft, kTextChunk))) + lineEnd;
}

QByteArray ReplyLine::next()
{
    const int wanted = int(std::min<qint64>(m_textLeft, kTextChunk));
    const QByteArray text = m_source->next(wanted);
    if (text.size() < wanted)
        return {};
    QByteArray chunk = m_isBegun ? QByteArray() : lineHeader(m_textLeft, m_offset);
    chunk += lineBody(text, m_offset);
    m_isBegun = true;
    m_textLeft -= wanted;
    if (m_textLeft == 0)
        chunk += kLineEnd;
    return chunk;
}
