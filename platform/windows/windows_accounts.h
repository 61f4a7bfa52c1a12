// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/accounts.h"

/// The normal accounts of this machine's own account database.
class WindowsAccounts : public AccountSystem
{
public:
    QVector<Account> accounts() override;
};
