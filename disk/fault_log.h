// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/fault_state.h"

#include <QString>

#include <map>

/// Logs the faults of drives and volumes at warning: when one starts, when its reason changes and when it
/// ends.
class FaultLog
{
public:
    /// `name` is the subject of the text: "Drive" with path, model and serial number.
    void failed(const QString &subject, const QString &name, quint32 systemError);
    void answered(const QString &subject);

private:
    std::map<QString, FaultState> m_faults; ///< of the subjects that ever failed
};
