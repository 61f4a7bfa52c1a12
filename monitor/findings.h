// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "monitor/evaluation.h"

/// Updates the findings of a listed drive: starts them, changes their severity, ends them, and ends
/// acknowledgements of findings that have become worse.
void updateFindings(DriveAlerts &drive, const DriveEvaluation &evaluation, const AlertRules &rules,
                    const QDateTime &now);

/// The same for a drive that is not in a complete list.
void updateMissingDrive(DriveAlerts &drive, const QDateTime &now);

/// Acknowledges a finding in its present state.
void acknowledge(DriveAlerts &drive, Finding &finding);
