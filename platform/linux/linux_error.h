// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/service_manager.h"

/// The system error code (platform/system_error.h) for an errno value.
[[nodiscard]] quint32 systemErrorOf(int errnoValue);

/// A failed request, in the words that go with `errnoValue`.
[[nodiscard]] ServiceOutcome failureOf(int errnoValue);
