// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/instance_lock.h"

#include <QString>

/// The exclusive right to a pipe's name on the whole machine. The pipe alone does not exclude others: a
/// second program may open one of the same name, and both would serve its clients in turn.
class MachineLock : public InstanceLock
{
public:
    explicit MachineLock(QString pipeName);
    ~MachineLock() override;

    Result<void> acquire() override;

private:
    const QString m_pipeName;
    void *m_mutex = nullptr; // a HANDLE
};
