// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

/// Returns the system error code (platform/system_error.h) for an errno value.
[[nodiscard]] quint32 systemErrorOf(int errnoValue);

/// Returns a failed request with the text of `errnoValue`.
[[nodiscard]] ServiceOutcome failureOf(int errnoValue);
