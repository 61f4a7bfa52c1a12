// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/device_handle.h"

#include "platform/windows/wide_text.h"

DeviceHandle::DeviceHandle(const QString &path)
    : m_handle(CreateFileW(wide(path), GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                           nullptr, OPEN_EXISTING, 0, nullptr))
{}

DeviceHandle::~DeviceHandle()
{
    if (isOpen())
        CloseHandle(m_handle);
}
