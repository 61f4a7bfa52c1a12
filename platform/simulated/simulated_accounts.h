// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/accounts.h"
#include "platform/simulated/machine.h"

#include <memory>

class SimulatedAccounts : public AccountSystem
{
public:
    explicit SimulatedAccounts(std::shared_ptr<Machine> machine);

    QVector<Account> accounts() override;

private:
    std::shared_ptr<Machine> m_machine;
};
