// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drive_requests.h"
#include "platform/drives.h"

#include <QtTest>

/// Checks the behaviour that every backend's drives share, for a fixed disk at `path` whose first and last
/// sectors can be read. Called from a test function of each backend's test.
namespace drive_contract {

inline constexpr int kPageSize = 4096;

/// A buffer aligned for reads of any drive.
struct alignas(kPageSize) Page
{
    char bytes[2 * kPageSize] = {};
};

inline void requests(Drive &drive)
{
    using namespace drive_request;
    QByteArray output(4096, '\xEE');
    const ControlReply reply = drive.control(kDriveGeometry, ByteView(), MutableBytes(output));
    QCOMPARE(reply.error, system_error::kNone);
    QCOMPARE(reply.bytesReturned, quint32(geometry::kSize));
    QCOMPARE(ByteView(output).le32(geometry::kMediaType), geometry::kFixedMedia);
    QCOMPARE(output.mid(geometry::kSize), QByteArray(output.size() - geometry::kSize, '\xEE'));

    const MutableBytes tooShort(output.data(), geometry::kSize - 1);
    QCOMPARE(drive.control(kDriveGeometry, ByteView(), tooShort).error, system_error::kInsufficientBuffer);
    constexpr quint32 kNoRequest = 0x0007FFFC;
    QCOMPARE(drive.control(kNoRequest, ByteView(), MutableBytes(output)).error,
             system_error::kInvalidFunction);

    QCOMPARE(drive.control(kDeviceNumber, ByteView(), MutableBytes(output)).bytesReturned,
             quint32(device_number::kSize));
    QCOMPARE(ByteView(output).le32(device_number::kDeviceType), device_number::kDiskDeviceType);
}

inline void reads(Drive &drive)
{
    using namespace drive_request;
    QByteArray answer(partition::kSize, '\0');
    QVERIFY(drive.control(kPartitionInfo, ByteView(), MutableBytes(answer)).ok());
    const quint64 end = ByteView(answer).le64(partition::kLength);
    QVERIFY(end >= sizeof(Page));

    Page page;
    QCOMPARE(drive.readAt(0, MutableBytes(page.bytes, kPageSize)).bytesRead, kPageSize);
    QCOMPARE(drive.readAt(end - kPageSize, MutableBytes(page.bytes, kPageSize)).bytesRead, kPageSize);
    const ReadReply across = drive.readAt(end - kPageSize, MutableBytes(page.bytes, 2 * kPageSize));
    QVERIFY(!across.ok() || across.bytesRead == kPageSize);
    const ReadReply beyond = drive.readAt(end, MutableBytes(page.bytes, kPageSize));
    QVERIFY(!beyond.ok() || beyond.bytesRead == 0);
    QCOMPARE(drive.readAt(1, MutableBytes(page.bytes, kPageSize)).error, system_error::kInvalidParameter);
}

inline void cancelling(Drive &drive)
{
    drive.cancel();
    Page page;
    QVERIFY(!drive.readAt(0, MutableBytes(page.bytes, kPageSize)).ok());
    QVERIFY(!drive.control(drive_request::kDriveGeometry, ByteView(), MutableBytes(page.bytes, 24)).ok());
}

inline void check(DriveSystem &drives, const QString &path)
{
    const OpenReply missing = drives.open("\\\\.\\NoSuchDrive0");
    QVERIFY(!missing.drive);
    QCOMPARE(missing.error, system_error::kFileNotFound);
    const OpenReply opened = drives.open(path);
    QCOMPARE(opened.error, system_error::kNone);
    QVERIFY(opened.drive);
    requests(*opened.drive);
    reads(*opened.drive);
    cancelling(*opened.drive);
}

} // namespace drive_contract
