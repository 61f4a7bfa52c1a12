// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/ata_header.h"

#include "platform/drive_requests.h"

namespace ata_header {

namespace {

namespace narrow = drive_request::ata_pass_through;

constexpr int kWideDataBufferOffset = 24; // 64 bits, aligned to 8
constexpr int kWidePreviousTaskFile = narrow::kPreviousTaskFile + kWideGrowth;
constexpr int kWideHeaderSize = narrow::kHeaderSize + kWideGrowth;

} // namespace

QByteArray widened(ByteView request)
{
    if (!request.covers(0, narrow::kHeaderSize))
        return request.toByteArray();
    QByteArray bytes(request.size() + kWideGrowth, '\0');
    const MutableBytes wide(bytes);
    wide.copyIn(0, request.mid(0, narrow::kDataBufferOffset));
    wide.copyIn(kWidePreviousTaskFile, request.mid(narrow::kPreviousTaskFile, request.size()));
    wide.setLe16(narrow::kLength, quint16(request.le16(narrow::kLength) + kWideGrowth));
    wide.setLe64(kWideDataBufferOffset, quint64(request.le32(narrow::kDataBufferOffset)) + kWideGrowth);
    return bytes;
}

QByteArray narrowed(ByteView answer)
{
    if (!answer.covers(0, kWideHeaderSize))
        return {};
    QByteArray bytes(answer.size() - kWideGrowth, '\0');
    const MutableBytes result(bytes);
    result.copyIn(0, answer.mid(0, narrow::kDataBufferOffset));
    result.copyIn(narrow::kPreviousTaskFile, answer.mid(kWidePreviousTaskFile, answer.size()));
    result.setLe16(narrow::kLength, quint16(answer.le16(narrow::kLength) - kWideGrowth));
    result.setLe32(narrow::kDataBufferOffset, quint32(answer.le64(kWideDataBufferOffset) - kWideGrowth));
    return bytes;
}

} // namespace ata_header
