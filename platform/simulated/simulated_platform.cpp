// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/simulated/simulated_platform.h"

#include "platform/platform.h"
#include "platform/simulated/demo_machine.h"
#include "platform/simulated/machine.h"
#include "platform/simulated/simulated_accounts.h"
#include "platform/simulated/simulated_drives.h"
#include "platform/simulated/simulated_event_log.h"
#include "platform/simulated/simulated_volumes.h"

#include <cstdio>

namespace {

void printProblem(const QString &problem)
{
    std::fprintf(stderr, "%s\n", problem.toLocal8Bit().constData());
    std::fflush(stderr);
}

/// The files of the built-in machine: it refers to none.
class NoFiles : public MachineFiles
{
public:
    std::optional<QByteArray> read(const QString &) override { return std::nullopt; }
    bool canRead(const QString &) override { return false; }
};

std::unique_ptr<Machine> demoMachine(const QString &name, QString &problem)
{
    NoFiles none;
    MachineReply reply = parseMachine(name, demoMachineJson(), none);
    problem = reply.problem;
    return std::make_unique<Machine>(std::move(reply.machine));
}

} // namespace

std::optional<QString> simulateMachine(Platform &platform, const QString &machine)
{
    QString problem;
    const std::shared_ptr<Machine> shared = machine == QLatin1String("demo")
                                                ? demoMachine(machine, problem)
                                                : Machine::fromFile(machine, printProblem, problem);
    if (!problem.isEmpty())
        return problem;
    platform.drives = std::make_unique<SimulatedDrives>(shared);
    platform.volumes = std::make_unique<SimulatedVolumes>(shared);
    platform.accounts = std::make_unique<SimulatedAccounts>(shared);
    platform.eventLog = std::make_unique<SimulatedEventLog>(shared);
    return std::nullopt;
}
