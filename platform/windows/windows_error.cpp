// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_error.h"

#include <windows.h>

ServiceOutcome lastFailure()
{
    const DWORD error = GetLastError();
    return {error, qt_error_string(int(error))};
}
