// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/accounts.h"

#include <QByteArray>

/// The user ids of people's accounts.
struct UidRange
{
    quint32 first = 1000;
    quint32 last = 60000;
};

/// Parses UID_MIN and UID_MAX of login.defs(5); a key that is not a decimal number keeps its default.
[[nodiscard]] UidRange uidRangeOf(const QByteArray &loginDefs);

/// Returns whether an account is root's or a person's: people have an id of the range and a shell to log in
/// with.
[[nodiscard]] bool isNormalAccount(quint32 uid, const QByteArray &shell, UidRange people);

/// Returns root and the accounts of people; root and the members of the groups sudo, wheel and admin are
/// administrators.
class LinuxAccounts : public AccountSystem
{
public:
    QVector<Account> accounts() override;
};
