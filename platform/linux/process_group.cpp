// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/process_group.h"

#include <csignal>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

constexpr unsigned kFirstOwnDescriptor = 3;
constexpr unsigned kCloseOnExec = 1U << 2; // CLOSE_RANGE_CLOEXEC, which older headers lack

/// Marks descriptors instead of closing them: QProcess reports a failed start through one.
void closeDescriptorsOnExec()
{
    if (::syscall(SYS_close_range, kFirstOwnDescriptor, ~0U, kCloseOnExec) == 0)
        return;
    struct rlimit limit = {};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    for (rlim_t descriptor = kFirstOwnDescriptor; descriptor < limit.rlim_cur; ++descriptor)
        ::fcntl(int(descriptor), F_SETFD, FD_CLOEXEC);
}

/// Between fork and exec only async-signal-safe functions may be called.
class GroupedProcess : public QProcess
{
protected:
    void setupChildProcess() override
    {
        ::setpgid(0, 0);
        for (int number = 1; number < NSIG; ++number)
            std::signal(number, SIG_DFL);
        sigset_t none;
        ::sigemptyset(&none);
        ::sigprocmask(SIG_SETMASK, &none, nullptr);
        closeDescriptorsOnExec();
    }
};

} // namespace

std::unique_ptr<QProcess> makeProcessGroup()
{
    return std::make_unique<GroupedProcess>();
}

void killProcessGroup(QProcess &process)
{
    const qint64 group = process.processId();
    if (group <= 0)
        return;
    // The child sets its group before it executes the program; before that it is alone.
    if (::kill(pid_t(-group), SIGKILL) != 0)
        process.kill();
}
