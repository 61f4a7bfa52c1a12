// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/instance_lock.h"
#include "platform/linux/file_descriptor.h"

#include <QString>

/// A lock on the file `<home>/lock`, which stays when the service has ended.
class HomeLock : public InstanceLock
{
public:
    /// An empty path means a home without a key, in which the service writes nothing: no lock is needed.
    explicit HomeLock(QString path);

    /// Succeeds, after a warning, where the file cannot be created: a full disk must not stop the monitoring.
    Result<void> acquire() override;

private:
    const QString m_path;
    FileDescriptor m_file;
};
