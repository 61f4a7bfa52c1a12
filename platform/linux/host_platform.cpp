// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/host_platform.h"

#include "platform/linux/disk_numbers.h"
#include "platform/linux/home.h"
#include "platform/linux/home_lock.h"
#include "platform/linux/linux_accounts.h"
#include "platform/linux/linux_drives.h"
#include "platform/linux/linux_event_log.h"
#include "platform/linux/linux_service_key.h"
#include "platform/linux/linux_service_manager.h"
#include "platform/linux/linux_volumes.h"

#include <QFileInfo>

#include <limits>
#include <malloc.h>
#include <sys/resource.h>

namespace {

/// Raises the limit of open descriptors, because consoles, drives and files together may need more than the
/// usual soft limit, which protects programs that use select(2). Returns the new limit; 0 for none.
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

/// Lets large blocks of memory return to the system when they are freed. By default each such block raises
/// the size from which this happens, and what connections have held stays with the process in pieces.
void returnFreedBlocksEarly()
{
#ifdef __GLIBC__
    constexpr int kLargeBlockBytes = 64 * 1024;
    ::mallopt(M_MMAP_THRESHOLD, kLargeBlockBytes);
#endif
}

/// Returns whether systemd runs the service: only that of the default home is the machine's own. The check
/// for systemd is that of sd_booted(3).
bool isManagedBySystemd(const QString &home)
{
    return home == QLatin1String(home::kDefaultDirectory) &&
           QFileInfo(QStringLiteral("/run/systemd/system")).isDir();
}

} // namespace

Platform makeHostPlatform()
{
    returnFreedBlocksEarly();
    const QString home = home::directory();
    // Without a key nothing is read or written in the home directory.
    const bool isInstalled = QFileInfo::exists(home::serviceKeyPath(home));
    const auto numbers =
        std::make_shared<DiskNumbers>(isInstalled ? home::driveNumbersPath(home) : QString());
    Platform platform;
    platform.drives = std::make_unique<LinuxDrives>(numbers);
    platform.volumes = std::make_unique<LinuxVolumes>(numbers);
    platform.accounts = std::make_unique<LinuxAccounts>();
    platform.eventLog = std::make_unique<LinuxEventLog>();
    platform.serviceKey = std::make_unique<LinuxServiceKey>(home::serviceKeyPath(home));
    platform.serviceManager = std::make_unique<LinuxServiceManager>(home, isManagedBySystemd(home));
    platform.instanceLock = std::make_unique<HomeLock>(isInstalled ? home::lockPath(home) : QString());
    platform.localSocketName = home::localSocketName();
    platform.descriptorLimit = raisedDescriptorLimit();
    return platform;
}
