// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// A preloaded library: makes an operation on the service's own small files fail, or kills the service during
// it. With HALVEX_MUTE_NAME_SERVER set, a name lookup never returns.

#include "process/failing_files.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <sys/mman.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

template <typename Function>
Function *real(const char *name)
{
    return reinterpret_cast<Function *>(::dlsym(RTLD_NEXT, name));
}

FaultPlan *mapPlan()
{
    const char *const path = std::getenv("HALVEX_FAULT_PLAN");
    const int descriptor = path ? ::open(path, O_RDWR | O_CLOEXEC) : -1;
    if (descriptor < 0)
        return nullptr;
    void *const memory =
        ::mmap(nullptr, sizeof(FaultPlan), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
    ::close(descriptor);
    return memory == MAP_FAILED ? nullptr : static_cast<FaultPlan *>(memory);
}

FaultPlan *plan()
{
    static FaultPlan *const mapped = mapPlan();
    return mapped;
}

bool isOurs(const char *path)
{
    const char *const home = std::getenv("HALVEX_HOME");
    if (!home || (plan()->file[0] && !std::strstr(path, plan()->file)))
        return false;
    return std::strcmp(path, home) == 0 || std::strstr(path, "/HalvexService.ini") ||
           std::strstr(path, "/temperature.log") || std::strstr(path, "/service-key.json");
}

bool isOurs(int descriptor)
{
    std::array<char, 32> link{};
    std::array<char, 4096> path{};
    std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", descriptor);
    return ::readlink(link.data(), path.data(), path.size() - 1) > 0 && isOurs(path.data());
}

/// Counts an operation on one of the service's files and returns whether it is the one that fails.
template <typename Place>
bool isDue(FaultPlan::Kind kind, Place place)
{
    if (!plan() || plan()->kind != kind || !isOurs(place) || plan()->skipped-- != 0)
        return false;
    ++plan()->injected;
    return true;
}

/// Returns the error of an operation that changes a file; 0 for none.
template <typename Place>
int writeFault(Place place)
{
    if (isDue(FaultPlan::Kill, place))
        ::raise(SIGKILL);
    if (isDue(FaultPlan::NoSpace, place))
        return ENOSPC;
    return isDue(FaultPlan::WriteError, place) ? EIO : 0;
}

int failed(int error)
{
    errno = error;
    return -1;
}

} // namespace

extern "C" {

ssize_t write(int descriptor, const void *bytes, size_t size)
{
    static auto *const function = real<ssize_t(int, const void *, size_t)>("write");
    const size_t half = size / 2;
    if (plan() && plan()->kind == FaultPlan::Kill && plan()->skipped == 0 && isOurs(descriptor))
        (void)function(descriptor, bytes, half);
    if (const int error = writeFault(descriptor)) {
        (void)function(descriptor, bytes, half);
        return failed(error);
    }
    return function(descriptor, bytes, size);
}

ssize_t read(int descriptor, void *bytes, size_t size)
{
    static auto *const function = real<ssize_t(int, void *, size_t)>("read");
    return isDue(FaultPlan::ReadError, descriptor) ? failed(EIO) : function(descriptor, bytes, size);
}

int fsync(int descriptor)
{
    static auto *const function = real<int(int)>("fsync");
    if (isDue(FaultPlan::SyncError, descriptor))
        return failed(EIO);
    if (isDue(FaultPlan::HangSync, descriptor)) {
        while (plan()->kind == FaultPlan::HangSync)
            ::usleep(1000);
    }
    const int error = writeFault(descriptor);
    return error ? failed(error) : function(descriptor);
}

int rename(const char *from, const char *to)
{
    static auto *const function = real<int(const char *, const char *)>("rename");
    const int error = writeFault(from);
    return error ? failed(error) : function(from, to);
}

int fchmod(int descriptor, mode_t mode)
{
    static auto *const function = real<int(int, mode_t)>("fchmod");
    const int error = writeFault(descriptor);
    return error ? failed(error) : function(descriptor, mode);
}

int open(const char *path, int flags, ...)
{
    static auto *const function = real<int(const char *, int, ...)>("open");
    std::va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    const int error = (flags & (O_CREAT | O_DIRECTORY)) != 0 ? writeFault(path) : 0;
    return error ? failed(error) : function(path, flags, mode);
}

int getaddrinfo(const char *name, const char *service, const addrinfo *hints, addrinfo **result)
{
    static auto *const function =
        real<int(const char *, const char *, const addrinfo *, addrinfo **)>("getaddrinfo");
    if (std::getenv("HALVEX_MUTE_NAME_SERVER")) {
        ++plan()->injected;
        for (;;)
            ::pause();
    }
    return function(name, service, hints, result);
}

} // extern "C"
