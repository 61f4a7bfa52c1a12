// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "platform/accounts.h"
#include "platform/drives.h"
#include "platform/event_log.h"
#include "platform/instance_lock.h"
#include "platform/service_key.h"
#include "platform/service_manager.h"
#include "platform/volumes.h"

#include <QString>

#include <memory>

/// The services of the operating system that the program uses. Composed once, in the program entry.
struct Platform
{
    std::unique_ptr<DriveSystem> drives;
    std::unique_ptr<VolumeSystem> volumes;
    std::unique_ptr<AccountSystem> accounts;
    std::unique_ptr<EventLog> eventLog;
    /// The log for warnings of services under the service manager, which have no standard error; null on
    /// systems where they have. Never the simulated machine's. Any thread may report.
    std::unique_ptr<EventLog> messageLog;
    std::unique_ptr<ServiceKey> serviceKey;
    std::unique_ptr<ServiceManager> serviceManager;
    std::unique_ptr<InstanceLock> instanceLock;
    QString localSocketName; ///< the name of the local client socket
    int descriptorLimit = 0; ///< limit of open files and sockets together; 0 for no limit
};
