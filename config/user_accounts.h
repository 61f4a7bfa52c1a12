// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/accounts.h"

#include <QString>

/// What consoles learn of the machine's local accounts, and the rights their users have.

[[nodiscard]] qint32 getUserCount(const QVector<Account> &accounts);

/// "Operator,Admin": the name and the access level of the account at `index`; empty when there is none.
[[nodiscard]] QString getUserInfo(const QVector<Account> &accounts, qint32 index);

/// One "1" or "0" a right. Every right is granted to every pair: no command is kept from anybody, and
/// consoles decide by themselves what to offer.
[[nodiscard]] QString checkUser(const QString &user, const QString &password);
