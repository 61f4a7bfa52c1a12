// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "wire/result.h"

/// Admits one serving program at a time to an installation, so that no two write the same files or listen
/// under the same local name. Destroying it, and any end of the process, releases it.
class InstanceLock
{
public:
    InstanceLock() = default;
    InstanceLock(const InstanceLock &) = delete;
    InstanceLock &operator=(const InstanceLock &) = delete;
    virtual ~InstanceLock() = default;

    /// Takes the lock. Fails if another program holds it.
    virtual Result<void> acquire() = 0;
};
