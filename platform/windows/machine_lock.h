// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/instance_lock.h"

#include <QString>

/// The exclusive claim to the name of a pipe, on the whole machine. The pipe alone does not exclude others: a
/// second program may open one of the same name, and takes turns with the first in serving its clients.
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
