// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"
#include "platform/simulated/machine.h"

#include <memory>

class SimulatedDrives : public DriveSystem
{
public:
    explicit SimulatedDrives(std::shared_ptr<Machine> machine);

    OpenReply open(const QString &path) override;

private:
    std::shared_ptr<Machine> m_machine;
};
