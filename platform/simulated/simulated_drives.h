// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/drives.h"
#include "platform/simulated/machine.h"

#include <map>
#include <memory>
#include <mutex>

/// The sleeping drives of the machine file that a command has woken. Any thread.
class SimulatedPower
{
public:
    /// A woken drive stays awake until the machine changes.
    [[nodiscard]] bool isAsleep(const std::shared_ptr<const MachineState> &machine, const DriveState &drive);
    void wake(const std::shared_ptr<const MachineState> &machine, int number);

private:
    std::mutex m_mutex;
    std::map<int, std::weak_ptr<const MachineState>> m_woken; ///< by drive; the machine of the last command
};

class SimulatedDrives : public DriveSystem
{
public:
    explicit SimulatedDrives(std::shared_ptr<Machine> machine);

    OpenReply open(const QString &path) override;

private:
    const std::shared_ptr<Machine> m_machine;
    const std::shared_ptr<SimulatedPower> m_power;
};
