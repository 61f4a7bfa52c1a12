// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_accounts.h"

#include <windows.h>

#include <lm.h>

QVector<Account> WindowsAccounts::accounts()
{
    constexpr DWORD kLevel = 3;
    BYTE *buffer = nullptr;
    DWORD read = 0;
    DWORD total = 0;
    // The status tells nothing that the number of entries read does not.
    NetUserEnum(nullptr, kLevel, FILTER_NORMAL_ACCOUNT, &buffer, MAX_PREFERRED_LENGTH, &read, &total,
                nullptr);
    QVector<Account> accounts;
    if (!buffer)
        return accounts;
    const auto *const entries = reinterpret_cast<const USER_INFO_3 *>(buffer);
    for (DWORD i = 0; i < read; ++i)
        accounts.append({QString::fromWCharArray(entries[i].usri3_name), quint32(entries[i].usri3_priv)});
    NetApiBufferFree(buffer);
    return accounts;
}
