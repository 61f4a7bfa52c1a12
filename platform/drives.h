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

/// An open drive; destroying it closes it. Requests come from one thread at a time; cancel() may be called
/// from any thread at any time.
class Drive
{
public:
    Drive() = default;
    Drive(const Drive &) = delete;
    Drive &operator=(const Drive &) = delete;
    virtual ~Drive() = default;

    /// Sends one control request (platform/drive_requests.h). Input and output may be the same memory; output
    /// bytes beyond `bytesReturned` stay unchanged. Blocks until the drive answers.
    virtual ControlReply control(quint32 code, ByteView input, MutableBytes output) = 0;

    /// Reads `buffer.size()` bytes at byte `offset`. Offset, length and the buffer's address must suit the
    /// drive's sectors; page-aligned buffers and multiples of the sector size always do.
    virtual ReadReply readAt(quint64 offset, MutableBytes buffer) = 0;

    /// Cancels a pending request or read, and makes every later one fail. A request that the system cannot
    /// cancel stays pending.
    virtual void cancel() = 0;
};

struct OpenReply
{
    std::unique_ptr<Drive> drive; ///< null when opening failed
    quint32 error = system_error::kNone;
};

/// The machine's drives, opened by path ("\\.\PhysicalDrive0"). All functions may be called on any thread.
class DriveSystem
{
public:
    DriveSystem() = default;
    DriveSystem(const DriveSystem &) = delete;
    DriveSystem &operator=(const DriveSystem &) = delete;
    virtual ~DriveSystem() = default;

    /// Updates the list of drives. Must be called before the opens of one detection or count: a system that
    /// enumerates its drives then does so once, not in every open(). Does not wake a drive.
    virtual void rescan() {}

    /// Opens for reading and writing, shared with other readers and writers. A new drive may stay unknown
    /// until the next rescan(); a replacement is never opened as the drive that it replaced.
    virtual OpenReply open(const QString &path) = 0;
};

/// Returns the path of drive `number` for open().
[[nodiscard]] QString physicalDrivePath(int number);

/// Returns the number in a path of physicalDrivePath(), in any case; -1 for any other path.
[[nodiscard]] int physicalDriveNumber(const QString &path);
