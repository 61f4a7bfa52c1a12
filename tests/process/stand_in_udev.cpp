// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers

// libudev of the stand-in disks, as far as the service uses it.

#include "stand_in_disks.h"

#include <libudev.h>

#include <cstring>
#include <fstream>

using stand_in::Disk;

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
    auto *const parent =
        new udev_device{*disk, std::string(stand_in::specification()) + '.' + disk->name, {}, nullptr};
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
    std::ofstream(std::string(stand_in::specification()) + ".scans", std::ios::app) << '.';
    for (const Disk &disk : stand_in::disks())
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
    return makeDevice(stand_in::find([&](const Disk &disk) { return kPath + disk.name == path; }));
}
udev_device *udev_device_new_from_devnum(udev *, char, dev_t device)
{
    return makeDevice(stand_in::find([&](const Disk &disk) { return disk.device() == device; }));
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

} // extern "C"
