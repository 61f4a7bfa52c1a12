// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

/// Returns the last failure of this thread, in the system's words.
[[nodiscard]] ServiceOutcome lastFailure();
