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

#include <dlfcn.h>
#include <fcntl.h>
#include <libudev.h>
#include <linux/fs.h>
#include <scsi/sg.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr long long kCapacity = 64LL * 1024 * 1024;
constexpr unsigned kMajor = 240; // for local use
constexpr int kSectorSize = 512;

struct Disk
{
    std::string name; // "sda"
    std::map<std::string, std::string> values;

    dev_t device() const { return makedev(kMajor, unsigned(name.back() - 'a')); }
    const char *value(const std::string &key) const
    {
        const auto found = values.find(key);
        return found == values.end() ? nullptr : found->second.c_str();
    }
};

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

template <typename Matches>
std::optional<Disk> find(Matches matches)
{
    for (const Disk &disk : disks()) {
        if (matches(disk))
            return disk;
    }
    return std::nullopt;
}

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

using Sector = std::array<unsigned char, kSectorSize>;

void putText(Sector &sector, int word, int words, std::string text)
{
    text.resize(std::size_t(2 * words), ' ');
    for (int i = 0; i < 2 * words; ++i)
        sector[std::size_t((2 * word + i) ^ 1)] = static_cast<unsigned char>(text[std::size_t(i)]);
}

Sector identifySector(const Disk &disk)
{
    Sector sector{};
    std::istringstream texts(disk.value("ata") ? disk.value("ata") : "");
    std::string model, serial, firmware;
    std::getline(texts, model, '|');
    std::getline(texts, serial, '|');
    std::getline(texts, firmware, '|');
    putText(sector, 27, 20, model);
    putText(sector, 10, 10, serial);
    putText(sector, 23, 4, firmware);
    return sector;
}

/// One attribute: a temperature of 33 degrees, with the threshold 20.
Sector smartSector(bool isData)
{
    Sector sector{};
    const unsigned char data[] = {194, 2, 0, 100, 100, 33};
    const unsigned char threshold[] = {194, 20};
    if (isData)
        std::copy(std::begin(data), std::end(data), sector.begin() + 2);
    else
        std::copy(std::begin(threshold), std::end(threshold), sector.begin() + 2);
    return sector;
}

void answerCommand(const Disk &disk, sg_io_hdr &header)
{
    constexpr int kIdentify = 0xEC;
    constexpr int kReadData = 0xD0;
    const bool isLong = header.cmd_len == 16;
    const int features = header.cmdp[isLong ? 4 : 3];
    const int command = header.cmdp[isLong ? 14 : 9];
    if (header.dxfer_len != kSectorSize)
        return;
    const Sector sector = command == kIdentify ? identifySector(disk) : smartSector(features == kReadData);
    std::copy(sector.begin(), sector.end(), static_cast<unsigned char *>(header.dxferp));
}

int answerSgIo(const Disk &disk, sg_io_hdr &header)
{
    const char *answer = disk.value(header.cmd_len == 16 ? "sg16" : "sg12");
    while (answer && std::strcmp(answer, "hang") == 0)
        pause();
    answerCommand(disk, header);
    int host = 0;
    int residue = 0;
    char sense[129] = "";
    if (answer)
        std::sscanf(answer, "%d,%d,%128s", &host, &residue, sense);
    header.host_status = static_cast<unsigned short>(host);
    header.resid = residue;
    header.sb_len_wr = static_cast<unsigned char>(std::strlen(sense) / 2);
    header.status = header.sb_len_wr > 0 ? 0x02 : 0;
    for (int i = 0; i < header.sb_len_wr; ++i)
        header.sbp[i] = static_cast<unsigned char>(std::stoi(std::string(sense + 2 * i, 2), nullptr, 16));
    return 0;
}

} // namespace

struct udev_device
{
    Disk disk;
    std::string path;
    std::string node;
    udev_device *parent;
};

struct udev_list_entry
{
    std::string name;
    udev_list_entry *next = nullptr;
};

struct udev_enumerate
{
    std::vector<udev_list_entry> entries;
};

struct udev
{
};

namespace {

const std::string kPath = "/sys/devices/stand-in/";

udev_device *makeDevice(const std::optional<Disk> &disk)
{
    if (!disk)
        return nullptr;
    auto *const parent = new udev_device{*disk, std::string(specification()) + '.' + disk->name, {}, nullptr};
    return new udev_device{*disk, kPath + disk->name, "/dev/" + disk->name, parent};
}

} // namespace

extern "C" {

udev *udev_new()
{
    static udev one;
    return &one;
}
udev *udev_unref(udev *)
{
    return nullptr;
}
udev_enumerate *udev_enumerate_new(udev *)
{
    return new udev_enumerate;
}
udev_enumerate *udev_enumerate_unref(udev_enumerate *enumerate)
{
    delete enumerate;
    return nullptr;
}
int udev_enumerate_add_match_subsystem(udev_enumerate *, const char *)
{
    return 0;
}
int udev_enumerate_add_match_property(udev_enumerate *, const char *, const char *)
{
    return 0;
}
int udev_enumerate_scan_devices(udev_enumerate *enumerate)
{
    std::ofstream(std::string(specification()) + ".scans", std::ios::app) << '.';
    for (const Disk &disk : disks())
        enumerate->entries.push_back({kPath + disk.name, nullptr});
    for (std::size_t i = 1; i < enumerate->entries.size(); ++i)
        enumerate->entries[i - 1].next = &enumerate->entries[i];
    return 0;
}
udev_list_entry *udev_enumerate_get_list_entry(udev_enumerate *enumerate)
{
    return enumerate->entries.empty() ? nullptr : &enumerate->entries.front();
}
udev_list_entry *udev_list_entry_get_next(udev_list_entry *entry)
{
    return entry->next;
}
const char *udev_list_entry_get_name(udev_list_entry *entry)
{
    return entry->name.c_str();
}
udev_device *udev_device_new_from_syspath(udev *, const char *path)
{
    return makeDevice(find([&](const Disk &disk) { return kPath + disk.name == path; }));
}
udev_device *udev_device_new_from_devnum(udev *, char, dev_t device)
{
    return makeDevice(find([&](const Disk &disk) { return disk.device() == device; }));
}
udev_device *udev_device_unref(udev_device *device)
{
    if (device)
        delete device->parent;
    delete device;
    return nullptr;
}
const char *udev_device_get_devnode(udev_device *device)
{
    return device->node.c_str();
}
const char *udev_device_get_sysname(udev_device *device)
{
    return device->disk.name.c_str();
}
const char *udev_device_get_syspath(udev_device *device)
{
    return device->path.c_str();
}
dev_t udev_device_get_devnum(udev_device *device)
{
    return device->disk.device();
}
const char *udev_device_get_property_value(udev_device *device, const char *name)
{
    return device->disk.value(name);
}
const char *udev_device_get_sysattr_value(udev_device *device, const char *name)
{
    const bool isOfNode = std::strcmp(name, "removable") == 0;
    return isOfNode == (device->parent != nullptr) ? device->disk.value(name) : nullptr;
}
udev_device *udev_device_get_parent(udev_device *device)
{
    return device->parent;
}
udev_device *udev_device_get_parent_with_subsystem_devtype(udev_device *device, const char *subsystem,
                                                           const char *)
{
    return std::strcmp(subsystem, "usb") == 0 ? device->parent : nullptr;
}

int open(const char *path, int flags, ...)
{
    if (const std::optional<Disk> disk = find([&](const Disk &one) { return "/dev/" + one.name == path; }))
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
        return answerSgIo(*disk, *static_cast<sg_io_hdr *>(argument));
    if (request == BLKGETSIZE64)
        *static_cast<unsigned long long *>(argument) = kCapacity;
    else
        *static_cast<int *>(argument) = kSectorSize;
    return 0;
}

} // extern "C"
