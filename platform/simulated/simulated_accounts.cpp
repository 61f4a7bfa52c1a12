// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/simulated_accounts.h"

#include <utility>

SimulatedAccounts::SimulatedAccounts(std::shared_ptr<Machine> machine)
    : m_machine(std::move(machine))
{}

QVector<Account> SimulatedAccounts::accounts()
{
    return m_machine->state()->accounts;
}
