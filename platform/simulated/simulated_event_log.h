// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/event_log.h"
#include "platform/simulated/machine.h"

#include <memory>

/// Appends each event to the machine's event log as one JSON object a line.
class SimulatedEventLog : public EventLog
{
public:
    explicit SimulatedEventLog(std::shared_ptr<Machine> machine);

    void report(const Event &event) override;

private:
    std::shared_ptr<Machine> m_machine;
};
