// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/reply_source.h"

#include <algorithm>
#include <utility>

QByteArray ReplySource::next(int maxBytes)
{
    const int wanted = int(std::min<qint64>(maxBytes, m_left));
    while (m_ready.size() < wanted) {
        const QByteArray piece = nextPiece();
        if (piece.isEmpty())
            break;
        m_ready += piece;
    }
    QByteArray bytes = std::exchange(m_ready, {});
    if (bytes.size() > wanted) {
        m_ready = bytes.mid(wanted);
        bytes.truncate(wanted);
    }
    m_left -= bytes.size();
    return bytes;
}
