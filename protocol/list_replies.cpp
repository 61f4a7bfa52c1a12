// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "protocol/list_replies.h"

#include "protocol/payloads.h"
#include "wire/separators.h"

#include <algorithm>
#include <utility>

namespace {

qint64 joinedLength(const QVector<QByteArray> &texts)
{
    qint64 length = std::max(texts.size() - 1, 0) * kItemSeparator.size();
    for (const QByteArray &text : texts)
        length += text.size();
    return length;
}

qint64 statusLength(const QVector<ScanStatusReply::Drive> &drives)
{
    qint64 length = std::max(drives.size() - 1, 0);
    for (const ScanStatusReply::Drive &drive : drives)
        length += drive.status.size() + payload::badRangesLength(drive.badRanges);
    return length;
}

} // namespace

JoinedReply::JoinedReply(const QString &head, QVector<QByteArray> texts)
    : ReplySource(head, joinedLength(texts))
    , m_texts(std::move(texts))
{}

QByteArray JoinedReply::nextPiece()
{
    if (m_next == m_texts.size())
        return {};
    const QByteArray separator = m_next == 0 ? QByteArray() : kItemSeparator.toLatin1();
    return separator + m_texts[m_next++];
}

qint64 JoinedReply::keptBytes() const
{
    qint64 bytes = 0;
    for (int i = m_next; i < m_texts.size(); ++i)
        bytes += m_texts[i].size();
    return bytes;
}

ScanStatusReply::ScanStatusReply(const QString &head, QVector<Drive> drives)
    : ReplySource(head, statusLength(drives))
    , m_drives(std::move(drives))
{}

QByteArray ScanStatusReply::nextPiece()
{
    constexpr int kRangesAtATime = 512;
    if (m_drive == m_drives.size())
        return {};
    const Drive &drive = m_drives[m_drive];
    QByteArray piece;
    if (m_range < 0) {
        piece = (m_drive == 0 ? QByteArray() : QByteArray("|")) + drive.status;
        m_range = 0;
    } else {
        const int end = std::min(m_range + kRangesAtATime, drive.badRanges.size());
        piece = payload::badRanges(drive.badRanges, m_range, end);
        m_range = end;
    }
    if (m_range == drive.badRanges.size()) {
        ++m_drive;
        m_range = -1;
    }
    return piece;
}

qint64 ScanStatusReply::keptBytes() const
{
    qint64 bytes = 0;
    for (int i = m_drive; i < m_drives.size(); ++i)
        bytes += m_drives[i].status.size() + m_drives[i].badRanges.size() * qint64(sizeof(SectorRange));
    return bytes;
}

HistoryReply::HistoryReply(const QString &head, HistoryReader reader)
    : ReplySource(head, reader.textBytes())
    , m_reader(std::move(reader))
{}
