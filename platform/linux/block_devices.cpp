// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#include "platform/linux/block_devices.h"

#include <QDir>
#include <QFile>

#include <libudev.h>
#include <sys/sysmacros.h>

#include <algorithm>
#include <memory>

namespace {

template <auto Release>
struct Releaser
{
    template <typename T>
    void operator()(T *object) const
    {
        Release(object);
    }
};

using Udev = std::unique_ptr<udev, Releaser<udev_unref>>;
using UdevDevice = std::unique_ptr<udev_device, Releaser<udev_device_unref>>;
using UdevEnumerate = std::unique_ptr<udev_enumerate, Releaser<udev_enumerate_unref>>;

QString text(const char *bytes)
{
    return QString::fromUtf8(bytes).trimmed();
}

/// udev writes bytes that its properties cannot hold as "\x20".
QString decoded(const char *bytes)
{
    QByteArray plain;
    for (QByteArray rest(bytes); !rest.isEmpty();) {
        if (rest.startsWith("\\x") && rest.size() >= 4) {
            plain += QByteArray::fromHex(rest.mid(2, 2));
            rest.remove(0, 4);
        } else {
            plain += rest.at(0);
            rest.remove(0, 1);
        }
    }
    return QString::fromUtf8(plain).trimmed();
}

/// A disk has hardware behind it, which mapped, loop and RAM devices have not; an optical drive is none.
bool isRealDisk(udev_device *device)
{
    const QByteArray name(udev_device_get_sysname(device));
    const QByteArray path(udev_device_get_syspath(device));
    // The kernel files a namespace that several controllers share under its virtual devices.
    const bool isVirtual =
        path.contains("/devices/virtual/") && !path.contains("/devices/virtual/nvme-subsystem/");
    return !isVirtual && !name.startsWith("sr") && !name.startsWith("fd") && !name.contains("boot") &&
           !name.contains("rpmb");
}

/// The kernel gives the drives behind its own translation this vendor, and cuts their model and revision
/// short; IDENTIFY tells them whole.
constexpr char kTranslatedVendor[] = "ATA";

/// The first of the disk's own answers: udev's property, else the kernel's attribute of the device behind it.
QString identity(udev_device *device, const char *encodedProperty, const char *property,
                 const char *attribute)
{
    if (const char *value =
            encodedProperty ? udev_device_get_property_value(device, encodedProperty) : nullptr)
        return decoded(value);
    if (const char *value = property ? udev_device_get_property_value(device, property) : nullptr)
        return text(value);
    udev_device *parent = udev_device_get_parent(device); // borrowed from `device`
    if (!parent || !attribute ||
        text(udev_device_get_sysattr_value(parent, "vendor")) == QLatin1String(kTranslatedVendor))
        return {};
    return text(udev_device_get_sysattr_value(parent, attribute));
}

bool removableAttribute(udev_device *disk)
{
    return QByteArray(udev_device_get_sysattr_value(disk, "removable")).trimmed() == "1";
}

BlockDisk describe(udev_device *device)
{
    BlockDisk disk;
    disk.node = text(udev_device_get_devnode(device));
    disk.device = udev_device_get_devnum(device);
    disk.isRemovable = removableAttribute(device);
    disk.vendor = identity(device, "ID_VENDOR_ENC", "ID_VENDOR", "vendor");
    if (disk.vendor == QLatin1String(kTranslatedVendor))
        disk.vendor.clear();
    disk.product = identity(device, "ID_MODEL_ENC", "ID_MODEL", "model");
    disk.revision = identity(device, nullptr, "ID_REVISION", "rev");
    disk.serial = identity(device, nullptr, "ID_SERIAL_SHORT", nullptr);
    return disk;
}

/// The whole disk that a block device is, or is a partition of.
dev_t wholeDiskOf(dev_t device)
{
    const Udev udev(udev_new());
    const UdevDevice entry(udev ? udev_device_new_from_devnum(udev.get(), 'b', device) : nullptr);
    if (!entry)
        return device;
    udev_device *disk = udev_device_get_parent_with_subsystem_devtype(entry.get(), "block", "disk");
    return disk ? udev_device_get_devnum(disk) : device;
}

/// The devices that a mapped device (dm, md) is made of. udev does not tell them; the kernel's tree does.
QVector<dev_t> slavesOf(dev_t device)
{
    QVector<dev_t> slaves;
    const QDir directory(QStringLiteral("/sys/dev/block/%1:%2/slaves").arg(major(device)).arg(minor(device)));
    for (const QString &name : directory.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        QFile file(directory.filePath(name + QLatin1String("/dev")));
        if (!file.open(QIODevice::ReadOnly))
            continue;
        const QList<QByteArray> numbers = file.readAll().trimmed().split(':');
        if (numbers.size() == 2)
            slaves.append(makedev(numbers.at(0).toUInt(), numbers.at(1).toUInt()));
    }
    return slaves;
}

constexpr int kDeepestMapping = 8; // encryption over volumes over arrays; deeper than anyone stacks them

std::optional<BlockDisk> diskBelow(dev_t device, const QVector<BlockDisk> &disks, int depth)
{
    const dev_t whole = wholeDiskOf(device);
    const auto found = std::find_if(disks.cbegin(), disks.cend(),
                                    [whole](const BlockDisk &disk) { return disk.device == whole; });
    if (found != disks.cend())
        return *found;
    if (depth >= kDeepestMapping)
        return std::nullopt;
    for (const dev_t slave : slavesOf(device)) {
        if (std::optional<BlockDisk> disk = diskBelow(slave, disks, depth + 1))
            return disk;
    }
    return std::nullopt;
}

} // namespace

QVector<BlockDisk> BlockDevices::wholeDisks()
{
    QVector<BlockDisk> disks;
    const Udev udev(udev_new());
    const UdevEnumerate enumeration(udev ? udev_enumerate_new(udev.get()) : nullptr);
    if (!enumeration)
        return disks;
    udev_enumerate_add_match_subsystem(enumeration.get(), "block");
    udev_enumerate_add_match_property(enumeration.get(), "DEVTYPE", "disk");
    udev_enumerate_scan_devices(enumeration.get());
    for (udev_list_entry *entry = udev_enumerate_get_list_entry(enumeration.get()); entry != nullptr;
         entry = udev_list_entry_get_next(entry)) {
        const UdevDevice device(udev_device_new_from_syspath(udev.get(), udev_list_entry_get_name(entry)));
        if (device && udev_device_get_devnode(device.get()) && isRealDisk(device.get()))
            disks.append(describe(device.get()));
    }
    std::sort(disks.begin(), disks.end(), [](const BlockDisk &a, const BlockDisk &b) {
        return a.node.size() != b.node.size() ? a.node.size() < b.node.size() : a.node < b.node;
    });
    return disks;
}

std::optional<BlockDisk> BlockDevices::diskOf(dev_t device)
{
    return diskBelow(device, wholeDisks(), 0);
}

QString BlockDevices::property(dev_t device, const char *name)
{
    const Udev udev(udev_new());
    const UdevDevice entry(udev ? udev_device_new_from_devnum(udev.get(), 'b', device) : nullptr);
    return entry ? decoded(udev_device_get_property_value(entry.get(), name)) : QString();
}

bool BlockDevices::isRemovable(dev_t device)
{
    const Udev udev(udev_new());
    const UdevDevice entry(udev ? udev_device_new_from_devnum(udev.get(), 'b', wholeDiskOf(device))
                                : nullptr);
    return entry && removableAttribute(entry.get());
}
