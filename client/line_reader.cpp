// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "client/line_reader.h"

#include "wire/scrambling.h"

#include <algorithm>

namespace client {

namespace {

constexpr int kLengthDigits = 8;
constexpr int kHeaderDigits = 10;
constexpr int kLineEndSize = 2;

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

} // namespace

std::optional<quint32> LineReader::announcedLength()
{
    quint32 length = 0;
    const int present = std::min(int(m_buffer.size()), kLengthDigits);
    for (int i = 0; i < present; ++i) {
        const int digit = hexDigit(m_buffer.at(i));
        if (digit < 0) {
            m_isBroken = true;
            return std::nullopt;
        }
        length = length << 4 | quint32(digit);
    }
    if (present < kLengthDigits)
        return std::nullopt;
    if (length < kHeaderDigits || length > kMaximumLine) {
        m_isBroken = true;
        return std::nullopt;
    }
    return length;
}

std::optional<QByteArray> LineReader::takeLine()
{
    if (m_isBroken)
        return std::nullopt;
    const auto length = announcedLength();
    if (!length)
        return std::nullopt;
    const int size = int(*length);
    const int searchEnd = std::min(size, int(m_buffer.size()));
    const auto begin = m_buffer.cbegin();
    const auto lineEnd = std::find_if(begin + std::min(m_searched, searchEnd), begin + searchEnd,
                                      [](char c) { return c == '\r' || c == '\n'; });
    m_searched = searchEnd;
    if (lineEnd != begin + searchEnd) {
        m_isBroken = true;
        return std::nullopt;
    }
    if (m_buffer.size() < size + kLineEndSize)
        return std::nullopt;
    if (m_buffer.at(size) != '\r' || m_buffer.at(size + 1) != '\n') {
        m_isBroken = true;
        return std::nullopt;
    }
    QByteArray line = m_buffer.left(size);
    m_buffer.remove(0, size + kLineEndSize);
    m_searched = 0;
    return line;
}

std::optional<QString> plainText(const QByteArray &line)
{
    if (line.size() < kHeaderDigits)
        return std::nullopt;
    const int high = hexDigit(line.at(kLengthDigits));
    const int low = hexDigit(line.at(kLengthDigits + 1));
    if (high < 0 || low < 0)
        return std::nullopt;
    // Almost any line yields some text. Only a line that the service made is the same when scrambled again.
    QString text = unscramble(line);
    if (scramble(text, high << 4 | low) != line)
        return std::nullopt;
    return text;
}

} // namespace client
