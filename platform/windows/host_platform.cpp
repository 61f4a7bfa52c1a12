// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/host_platform.h"

#include "platform/windows/machine_lock.h"
#include "platform/windows/windows_accounts.h"
#include "platform/windows/windows_drives.h"
#include "platform/windows/windows_event_log.h"
#include "platform/windows/windows_service_key.h"
#include "platform/windows/windows_service_manager.h"
#include "platform/windows/windows_volumes.h"
#include "wire/local_service_name.h"

Platform makeHostPlatform()
{
    Platform platform;
    platform.drives = std::make_unique<WindowsDrives>();
    platform.volumes = std::make_unique<WindowsVolumes>();
    platform.accounts = std::make_unique<WindowsAccounts>();
    platform.eventLog = std::make_unique<WindowsEventLog>();
    platform.messageLog = std::make_unique<WindowsEventLog>();
    platform.serviceKey = std::make_unique<WindowsServiceKey>();
    platform.serviceManager = std::make_unique<WindowsServiceManager>();
    platform.localSocketName = QLatin1String(kLocalServiceName);
    platform.instanceLock = std::make_unique<MachineLock>(platform.localSocketName);
    return platform;
}
