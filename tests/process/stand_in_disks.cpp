// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// A library to preload: takes the place of libudev and of the kernel's block devices, so that the Linux build
// runs on ATA disks that exist only in the file that STAND_IN_DISKS names. A line of it is a disk: the name
// of its node, then KEY=VALUE pairs, all separated by tabs. A key that begins with "ID_" is a property of
// udev's, "wwid", "vendor", "model", "rev", "removable" and "serial" (of a USB bridge) are the kernel's
// attributes, whose other files lie in a folder named like this file, a dot and the node; "ata" is what
// IDENTIFY reports, as MODEL|SERIAL|FIRMWARE; "sg16" and "sg12" are the answers to SG_IO with a command of
// that length, as HOST STATUS,RESIDUE,SENSE IN HEX, or "hang" for a call that never returns. Each enumeration
// adds a byte to the file with ".scans" appended to its name.

#include "stand_in_disks.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/fs.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <sstream>

namespace stand_in {

const char *specification()
{
    const char *path = std::getenv("STAND_IN_DISKS");
    return path ? path : "";
}

std::vector<Disk> disks()
{
    std::vector<Disk> all;
    std::ifstream file(specification());
    for (std::string line; std::getline(file, line);) {
        std::istringstream fields(line);
        Disk disk;
        std::getline(fields, disk.name, '\t');
        for (std::string field; std::getline(fields, field, '\t');) {
            const std::size_t equals = field.find('=');
            disk.values[field.substr(0, equals)] = field.substr(equals + 1);
        }
        if (!disk.name.empty())
            all.push_back(disk);
    }
    return all;
}

} // namespace stand_in

namespace {

using stand_in::Disk;

constexpr long long kCapacity = 64LL * 1024 * 1024;

template <typename Function>
Function next(const char *name)
{
    return reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
}

/// The disks that are open, by their descriptors; a descriptor that was closed may be another file by now.
struct OpenDisk
{
    ino_t inode;
    Disk disk;
};
std::mutex mutex;
std::map<int, OpenDisk> &openDisks()
{
    static auto *all = new std::map<int, OpenDisk>; // outlives threads that hang
    return *all;
}

int realStatus(int descriptor, struct stat *status)
{
    static const auto function = next<int (*)(int, struct stat *)>("fstat");
    return function(descriptor, status);
}

std::optional<Disk> diskAt(int descriptor)
{
    const std::lock_guard<std::mutex> lock(mutex);
    const auto found = openDisks().find(descriptor);
    struct stat status;
    if (found == openDisks().end() || realStatus(descriptor, &status) != 0 ||
        status.st_ino != found->second.inode)
        return std::nullopt;
    return found->second.disk;
}

int openDisk(const Disk &disk)
{
    const int descriptor = memfd_create(disk.name.c_str(), MFD_CLOEXEC);
    struct stat status;
    if (descriptor < 0 || ftruncate(descriptor, kCapacity) != 0 || realStatus(descriptor, &status) != 0)
        return -1;
    const std::lock_guard<std::mutex> lock(mutex);
    openDisks()[descriptor] = {status.st_ino, disk};
    return descriptor;
}

} // namespace

extern "C" {

int open(const char *path, int flags, ...)
{
    if (const std::optional<Disk> disk =
            stand_in::find([&](const Disk &one) { return "/dev/" + one.name == path; }))
        return openDisk(*disk);
    va_list arguments;
    va_start(arguments, flags);
    const mode_t mode = (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(arguments, mode_t) : 0;
    va_end(arguments);
    static const auto function = next<int (*)(const char *, int, ...)>("open");
    return function(path, flags, mode);
}

int fstat(int descriptor, struct stat *status) noexcept
{
    const int result = realStatus(descriptor, status);
    if (const std::optional<Disk> disk = diskAt(descriptor)) {
        status->st_rdev = disk->device();
        status->st_mode = S_IFBLK | 0600;
    }
    return result;
}

int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    const bool isOurs = request == SG_IO || request == BLKGETSIZE64 || request == BLKSSZGET;
    const std::optional<Disk> disk = isOurs ? diskAt(descriptor) : std::nullopt;
    if (!disk) {
        static const auto function = next<int (*)(int, unsigned long, ...)>("ioctl");
        return function(descriptor, request, argument);
    }
    if (request == SG_IO)
        return stand_in::answerSgIo(*disk, *static_cast<sg_io_hdr *>(argument));
    if (request == BLKGETSIZE64)
        *static_cast<unsigned long long *>(argument) = kCapacity;
    else
        *static_cast<int *>(argument) = stand_in::kSectorSize;
    return 0;
}

} // extern "C"
