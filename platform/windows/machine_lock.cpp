// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/machine_lock.h"

#include "platform/windows/wide_text.h"

#include <windows.h>

#include <utility>

MachineLock::MachineLock(QString pipeName)
    : m_pipeName(std::move(pipeName))
{}

MachineLock::~MachineLock()
{
    if (m_mutex)
        CloseHandle(m_mutex);
}

Result<void> MachineLock::acquire()
{
    // Services and the desktop have sessions, and so names, of their own.
    const QString name = QStringLiteral("Global\\") + m_pipeName;
    m_mutex = CreateMutexW(nullptr, FALSE, wide(name));
    const DWORD error = GetLastError();
    // Access is denied where another account's service has it.
    if (m_mutex && error != ERROR_ALREADY_EXISTS)
        return {};
    if (error == ERROR_ALREADY_EXISTS || error == ERROR_ACCESS_DENIED)
        return Error{QStringLiteral("another service is running: it has the pipe %1").arg(m_pipeName)};
    return Error{
        QStringLiteral("the pipe %1 cannot be claimed: %2").arg(m_pipeName, qt_error_string(int(error)))};
}
