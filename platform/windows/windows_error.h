// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

/// The failure that the system has just reported on this thread, in its own words.
[[nodiscard]] ServiceOutcome lastFailure();
