// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"
#include "monitor/temperature_history.h"
#include "protocol/reply_source.h"

#include <QVector>

/// The replies that may be long: each keeps what its text is made of, and makes it piece by piece.

/// Texts that are kept elsewhere too, with a separator between them.
class JoinedReply : public ReplySource
{
public:
    JoinedReply(const QString &head, QVector<QByteArray> texts);

private:
    [[nodiscard]] QByteArray nextPiece() override;
    [[nodiscard]] qint64 keptBytes() const override;

    QVector<QByteArray> m_texts;
    int m_next = 0;
};

/// State, progress and bad ranges of every drive's last scan.
class ScanStatusReply : public ReplySource
{
public:
    struct Drive
    {
        QByteArray status; ///< without the ranges
        QVector<SectorRange> badRanges;
    };
    ScanStatusReply(const QString &head, QVector<Drive> drives);

private:
    [[nodiscard]] QByteArray nextPiece() override;
    [[nodiscard]] qint64 keptBytes() const override;

    QVector<Drive> m_drives;
    int m_drive = 0;
    int m_range = -1; ///< next one of the drive; -1: its status is next
};

/// The records of a period.
class HistoryReply : public ReplySource
{
public:
    HistoryReply(const QString &head, HistoryReader reader);

private:
    [[nodiscard]] QByteArray nextPiece() override { return m_reader.next(); }
    [[nodiscard]] qint64 keptBytes() const override { return m_reader.heldBytes(); }

    HistoryReader m_reader;
};
