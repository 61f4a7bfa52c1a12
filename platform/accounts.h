// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include <QString>
#include <QVector>

/// A local user account; its name is empty if the system counted the account but did not return it.
/// `privilege` is 0 for a guest, 1 for a user, 2 for an administrator (lmaccess.h).
struct Account
{
    QString name;
    quint32 privilege = 0;
};

/// The machine's local accounts. Event loop's thread only.
class AccountSystem
{
public:
    AccountSystem() = default;
    AccountSystem(const AccountSystem &) = delete;
    AccountSystem &operator=(const AccountSystem &) = delete;
    virtual ~AccountSystem() = default;

    /// Returns all normal accounts in the system's order; empty if the system refuses.
    virtual QVector<Account> accounts() = 0;
};
