// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/bytes.h"
#include "platform/system_error.h"

#include <QString>

#include <memory>

/// The result of a control request. `bytesReturned` counts the bytes of the output that the system wrote.
struct ControlReply
{
    quint32 error = system_error::kNone;
    quint32 bytesReturned = 0;

    [[nodiscard]] bool ok() const { return error == system_error::kNone; }
};

/// The result of a read; a read at the drive's end may be short without an error.
struct ReadReply
{
    quint32 error = system_error::kNone;
    int bytesRead = 0;

    [[nodiscard]] bool ok() const { return error == system_error::kNone; }
};

/// An open drive; destroying it closes it. One thread at a time makes requests; cancel() alone may come
/// from any thread at any time.
class Drive
{
public:
    Drive() = default;
    Drive(const Drive &) = delete;
    Drive &operator=(const Drive &) = delete;
    virtual ~Drive() = default;

    /// One control request (platform/drive_requests.h). Input and output may be the same memory; output
    /// bytes beyond `bytesReturned` keep what the caller put there. Blocks until the drive answers.
    virtual ControlReply control(quint32 code, ByteView input, MutableBytes output) = 0;

    /// Reads `buffer.size()` bytes at byte `offset`. Offset, length and the buffer's address must suit the
    /// drive's sectors; page-aligned buffers and multiples of the sector size always do.
    virtual ReadReply readAt(quint64 offset, MutableBytes buffer) = 0;

    /// Makes a pending request or read, and every later one, end early with an error, as far as the system
    /// can: a request that it cannot cut off stays pending.
    virtual void cancel() = 0;
};

struct OpenReply
{
    std::unique_ptr<Drive> drive; ///< null when opening failed
    quint32 error = system_error::kNone;
};

/// The machine's drives, opened by path ("\\.\PhysicalDrive0"). Any thread may call.
class DriveSystem
{
public:
    DriveSystem() = default;
    DriveSystem(const DriveSystem &) = delete;
    DriveSystem &operator=(const DriveSystem &) = delete;
    virtual ~DriveSystem() = default;

    /// Looks for drives that came or went. Call it before the opens of one detection or count: a system that
    /// lists its drives then does so once, and not for every open(). Does not wake a drive.
    virtual void rescan() {}

    /// Opens for reading and writing, shared with other readers and writers. Until the next rescan() a new
    /// drive may stay unknown; a drive that was swapped is never taken for the one before it.
    virtual OpenReply open(const QString &path) = 0;
};

/// The path of drive `number`, as open() takes it.
[[nodiscard]] inline QString physicalDrivePath(int number)
{
    return QStringLiteral("\\\\.\\PhysicalDrive%1").arg(number);
}
