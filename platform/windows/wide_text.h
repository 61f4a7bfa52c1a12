// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>

/// Returns `text` as the system's calls take it; valid as long as `text` is.
[[nodiscard]] inline const wchar_t *wide(const QString &text)
{
    static_assert(sizeof(wchar_t) == sizeof(ushort));
    return reinterpret_cast<const wchar_t *>(text.utf16());
}
