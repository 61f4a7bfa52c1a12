// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "config/settings.h"
#include "config/settings_store.h"
#include "platform/host_platform.h"
#include "platform/simulated/simulated_platform.h"
#include "service/command_line.h"
#include "service/hx_service.h"
#include "service/service_context.h"

#include <QThread>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <optional>

namespace {

constexpr int kBadMachineFile = 1;

/// The time since the system started, which differs from one start of the service to the next.
unsigned tickCount()
{
    using std::chrono::steady_clock;
    return unsigned(
        std::chrono::duration_cast<std::chrono::milliseconds>(steady_clock::now().time_since_epoch())
            .count());
}

/// Puts the machine that HALVEX_MACHINE names in the place of this one, for a program that would serve; the
/// options that do not serve never look at it. False when there is something wrong with that machine.
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

} // namespace

int main(int argc, char *argv[])
{
    std::srand(tickCount());
    Platform platform = makeHostPlatform();
    if (!chooseMachine(argc, argv, platform))
        return kBadMachineFile;

    Settings settings;
    const OffsetSource offsets = [] { return std::rand() % 100; };
    SettingsStore store(settings, *platform.serviceKey, offsets);
    store.readSettings();
    QThread::msleep(10);

    ServiceContext context{platform, settings, store, offsets};
    HxService service(argc, argv, context);
    const int result = service.exec();
    if (service.leftThreadsBehind())
        std::_Exit(
            result); // a thread that hangs in a drive's request still uses what would be destroyed here
    return result;
}
