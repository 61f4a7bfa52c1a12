// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/platform.h"

/// Returns the machine this program runs on: its drives, volumes, accounts, event log, service key, service
/// manager and local socket name. Each system's folder implements it. Prepares the process for its work
/// there.
[[nodiscard]] Platform makeHostPlatform();
