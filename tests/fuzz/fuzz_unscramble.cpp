// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "wire/scrambling.h"

#include "fuzz/fuzz_input.h"
#include "protocol/plain_scrambling.h"

#include <QRegularExpression>

/// Input: a line as a peer may send it, and the same bytes after a valid length header. Both yield the same
/// text as the plain algorithm.
void fuzz(const QByteArray &line)
{
    // The plain algorithm's numbers are parsed by QString::toInt(), which accepts blanks, signs, "0x" and
    // NUL; the real one reads an invalid digit as zero.
    static const QRegularExpression comparable(QStringLiteral("\\A[0-9A-WYZa-wyz]*\\z"));
    const QByteArray header = QByteArray::number(line.size() + 8, 16).rightJustified(8, '0');
    for (const QByteArray &received : {line, QByteArray(header + line)}) {
        const QString text = unscramble(received);
        const QString latin1 = QString::fromLatin1(received.constData(), received.size());
        require(!comparable.match(latin1).hasMatch() || text == plain::unscramble(latin1));
    }
}
