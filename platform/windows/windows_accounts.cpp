// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/windows/windows_accounts.h"

#include <algorithm>
#include <windows.h>

#include <lm.h>

QVector<Account> WindowsAccounts::accounts()
{
    constexpr DWORD kLevel = 3;
    BYTE *buffer = nullptr;
    DWORD read = 0;
    DWORD total = 0;
    // The status adds nothing to the number of entries.
    NetUserEnum(nullptr, kLevel, FILTER_NORMAL_ACCOUNT, &buffer, MAX_PREFERRED_LENGTH, &read, &total,
                nullptr);
    QVector<Account> accounts;
    const auto *const entries = reinterpret_cast<const USER_INFO_3 *>(buffer);
    for (DWORD i = 0; entries && i < read; ++i)
        accounts.append({QString::fromWCharArray(entries[i].usri3_name), quint32(entries[i].usri3_priv)});
    accounts.resize(int(std::max(DWORD(accounts.size()), total)));
    if (buffer)
        NetApiBufferFree(buffer);
    return accounts;
}
