// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/workers.h"

/// Returns the limits for the work on drives and volumes. Each program defines its own: the service the usual
/// ones, the program of the process tests shorter ones.
[[nodiscard]] WorkLimits workLimits();
