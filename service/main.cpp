// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/service_options.h"
#include "config/settings.h"
#include "config/settings_store.h"
#include "platform/host_platform.h"
#include "platform/program_arguments.h"
#include "platform/program_name.h"
#include "platform/simulated/simulated_platform.h"
#include "service/command_line.h"
#include "service/hx_service.h"
#include "service/log_routes.h"
#include "service/service_context.h"
#include "service/work_limits.h"

#include <QThread>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

/// A start that fails in the same way until a file or an option is changed; the systemd unit does not repeat
/// it.
constexpr int kBadConfiguration = 1;

/// Returns the time since the system started, which differs from one start of the service to the next.
unsigned tickCount()
{
    using std::chrono::steady_clock;
    return unsigned(
        std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch())
            .count());
}

/// Takes the lock of the installation for a program that would serve. Returns false, after a message, if
/// another service has it.
bool isOnlyService(int argc, char *argv[], Platform &platform)
{
    if (!wouldServe(argc, argv))
        return true;
    const Result<void> locked = platform.instanceLock->acquire();
    if (locked)
        return true;
    const QString reason = locked.failure().text;
    std::fprintf(stderr, "The service %s could not start\n%s\n", kServiceName,
                 reason.toLocal8Bit().constData());
    if (platform.messageLog)
        platform.messageLog->report({QString::fromLatin1(kServiceName), EventType::Error, 0, 0, reason, {}});
    return false;
}

/// Replaces this machine by the one that HALVEX_MACHINE names, for a program that would serve; other options
/// ignore it. Returns false if that machine is not valid.
bool chooseMachine(int argc, char *argv[], Platform &platform)
{
    const QString machine = qEnvironmentVariable("HALVEX_MACHINE");
    if (machine.isEmpty() || !wouldServe(argc, argv))
        return true;
    const std::optional<QString> error = simulateMachine(platform, machine);
    if (error)
        std::fprintf(stderr, "%s\n", error->toLocal8Bit().constData());
    return !error;
}

/// Reads the options for a program that would serve. A bad one is reported on standard error and in the event
/// log.
std::optional<ServiceOptions> readOptions(int argc, char *argv[], Platform &platform)
{
    if (!wouldServe(argc, argv))
        return ServiceOptions();
    Result<ServiceOptions> options = readServiceOptions(*platform.serviceKey);
    if (options)
        return *std::move(options);
    const QString text = options.failure().text;
    std::fprintf(stderr, "%s\n", text.toLocal8Bit().constData());
    platform.eventLog->report({QString::fromLatin1(kServiceName), EventType::Error, 0, 0, text, {}});
    return std::nullopt;
}

} // namespace

int main(int argc, char *argv[])
{
    ProgramArguments arguments(argc, argv);
    argc = arguments.count();
    argv = arguments.values();
    std::srand(tickCount());
    Platform platform = makeHostPlatform();
    if (!chooseMachine(argc, argv, platform))
        return kBadConfiguration;

    LogRoutes logs;
    const bool isManaged = serviceOption(argc > 1 ? argv[1] : nullptr) == ServiceOption::Run;
    if (isManaged && platform.messageLog)
        logs.addEventLog(*platform.messageLog);

    if (!isOnlyService(argc, argv, platform))
        return QtServiceBase::kCouldNotStart;

    const std::optional<ServiceOptions> options = readOptions(argc, argv, platform);
    if (!options)
        return kBadConfiguration;
    if (!options->logFile.isEmpty())
        logs.addFile(options->logFile);

    Settings settings;
    const OffsetSource offsets = [] { return std::rand() % 100; };
    SettingsStore store(settings, *platform.serviceKey, offsets);
    store.readSettings();
    QThread::msleep(10);

    ServiceContext context{platform, settings, store, *options, offsets, workLimits()};
    HxService service(argc, argv, context);
    const int result = service.exec();
    if (service.hasHungThreads())
        std::_Exit(
            result); // a thread that hangs in a request still uses objects that would be destroyed here
    return result;
}
