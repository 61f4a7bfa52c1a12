// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/scrambling.h"

#include "fuzz/fuzz_input.h"
#include "protocol/plain_scrambling.h"

#include <algorithm>
#include <cctype>

/// Whether the plain reading can be compared: its numbers go through QString::toInt(), which forgives blanks,
/// signs, "0x" and NUL, where a digit that is none counts as zero.
static bool isComparable(const QByteArray &line)
{
    return std::all_of(line.begin(), line.end(), [](char c) {
        return std::isalnum(static_cast<unsigned char>(c)) &&
               std::tolower(static_cast<unsigned char>(c)) != 'x';
    });
}

/// A line as a peer may send it, and the same bytes behind the length header that lets them through: both are
/// read as the plain way of reading them does.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray line = bytesOf(data, size);
    const QByteArray header = QByteArray::number(line.size() + 8, 16).rightJustified(8, '0');
    for (const QByteArray &received : {line, QByteArray(header + line)}) {
        const QString text = unscramble(received);
        require(!isComparable(received) || text == plain::unscramble(QString::fromLatin1(received)));
    }
    return 0;
}
