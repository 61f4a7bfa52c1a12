// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QVector>

/// A local user account. `privilege` is 0 for a guest, 1 for a user, 2 for an administrator (lmaccess.h).
struct Account
{
    QString name;
    quint32 privilege = 0;
};

/// The machine's local accounts. Called from the event loop's thread only.
class AccountSystem
{
public:
    AccountSystem() = default;
    AccountSystem(const AccountSystem &) = delete;
    AccountSystem &operator=(const AccountSystem &) = delete;
    virtual ~AccountSystem() = default;

    /// All normal accounts in the system's order; empty when it cannot tell.
    virtual QVector<Account> accounts() = 0;
};
