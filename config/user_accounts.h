// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/accounts.h"

#include <QString>

/// The machine's local accounts as consoles see them, and the rights of their users.

[[nodiscard]] qint32 getUserCount(const QVector<Account> &accounts);

/// Returns "Operator,Admin": the name and the access level of the account at `index`; empty if there is none.
[[nodiscard]] QString getUserInfo(const QVector<Account> &accounts, qint32 index);

/// Returns "1" or "0" for each right. Every right is granted to every pair: the service refuses no command,
/// and consoles decide which ones they offer.
[[nodiscard]] QString checkUser(const QString &user, const QString &password);
