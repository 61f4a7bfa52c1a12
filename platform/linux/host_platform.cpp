// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/host_platform.h"

#include "platform/linux/disk_numbers.h"
#include "platform/linux/home.h"
#include "platform/linux/linux_accounts.h"
#include "platform/linux/linux_drives.h"
#include "platform/linux/linux_event_log.h"
#include "platform/linux/linux_service_key.h"
#include "platform/linux/linux_service_manager.h"
#include "platform/linux/linux_volumes.h"

#include <QFileInfo>

#include <limits>
#include <sys/resource.h>

namespace {

/// Consoles, drives and files together may take more descriptors than the usual soft limit, which is there
/// for programs that use select(2).
/// The limit that holds from now on; 0 for none.
int raisedDescriptorLimit()
{
    rlimit limit{};
    if (::getrlimit(RLIMIT_NOFILE, &limit) != 0)
        return 0;
    rlimit raised = limit;
    raised.rlim_cur = limit.rlim_max;
    const rlim_t now = ::setrlimit(RLIMIT_NOFILE, &raised) == 0 ? raised.rlim_cur : limit.rlim_cur;
    return now > rlim_t(std::numeric_limits<int>::max()) ? 0 : int(now);
}

/// Only the default home's service is the machine's own; sd_booted(3) tells of systemd in the same way.
bool isManagedBySystemd(const QString &home)
{
    return home == QLatin1String(home::kDefaultDirectory) &&
           QFileInfo(QStringLiteral("/run/systemd/system")).isDir();
}

} // namespace

Platform makeHostPlatform()
{
    const QString home = home::directory();
    const auto numbers = std::make_shared<DiskNumbers>();
    Platform platform;
    platform.drives = std::make_unique<LinuxDrives>(numbers);
    platform.volumes = std::make_unique<LinuxVolumes>(numbers);
    platform.accounts = std::make_unique<LinuxAccounts>();
    platform.eventLog = std::make_unique<LinuxEventLog>();
    platform.serviceKey = std::make_unique<LinuxServiceKey>(home::serviceKeyPath(home));
    platform.serviceManager = std::make_unique<LinuxServiceManager>(home, isManagedBySystemd(home));
    platform.localSocketName = home::localSocketName();
    platform.descriptorLimit = raisedDescriptorLimit();
    return platform;
}
