// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

#include <windows.h>

/// A device or volume opened for reading and writing, shared with other readers and writers, without flags:
/// every request on it blocks its thread.
class DeviceHandle
{
public:
    /// Check isOpen() afterwards; the reason for a failure is the thread's last error.
    explicit DeviceHandle(const QString &path);
    ~DeviceHandle();
    DeviceHandle(const DeviceHandle &) = delete;
    DeviceHandle &operator=(const DeviceHandle &) = delete;

    [[nodiscard]] bool isOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    [[nodiscard]] HANDLE get() const { return m_handle; }

private:
    HANDLE m_handle;
};
