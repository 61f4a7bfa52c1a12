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

/// Returns whether hardware backs the device, unlike mapped, loop and RAM devices, and it is not an optical
/// drive.
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

/// The vendor in INQUIRY for ATA drives that are translated to SCSI. Such a drive's INQUIRY holds only 16
/// characters of its model and 4 of its revision, whatever their source; IDENTIFY has all of them.
constexpr char kTranslatedVendor[] = "ATA";

QString attribute(udev_device *device, const char *name)
{
    return device ? text(udev_device_get_sysattr_value(device, name)) : QString();
}

QString property(udev_device *device, const char *name)
{
    return text(udev_device_get_property_value(device, name));
}

/// Returns udev's property, which may be kept in an encoded form too, else the kernel's attribute of the
/// device that the disk belongs to.
QString reported(udev_device *device, const char *encodedProperty, const char *plainProperty,
                 const char *kernelAttribute)
{
    if (const char *value = udev_device_get_property_value(device, encodedProperty))
        return decoded(value);
    if (const char *value = udev_device_get_property_value(device, plainProperty))
        return text(value);
    return attribute(udev_device_get_parent(device), kernelAttribute); // the parent belongs to `device`
}

bool removableAttribute(udev_device *disk)
{
    return attribute(disk, "removable") == QLatin1String("1");
}

/// Returns the name that stays with the drive. The kernel's comes first because it is there as soon as the
/// node is, while udev's properties follow later; for drives with a world wide name both are the same.
QString identityOf(udev_device *device, const BlockDisk &disk)
{
    for (udev_device *holder : {udev_device_get_parent(device), device}) { // SCSI, NVMe
        const QString name = attribute(holder, "wwid").simplified();
        if (!name.isEmpty())
            return name;
    }
    QString name = property(device, "ID_WWN");
    if (name.startsWith(QLatin1String("0x")))
        return name.replace(0, 2, QStringLiteral("naa."));
    if (!name.isEmpty())
        return name;
    const QString model = disk.product.isEmpty() ? property(device, "ID_MODEL") : disk.product;
    return QStringList{model, disk.serial}.join(QLatin1Char(' ')).simplified();
}

/// Returns the serial number that the kernel read when it attached the drive: from page 80h of the vital
/// product data, after a header of four bytes, else from the USB bridge. The page may be there and empty.
QString unitSerial(udev_device *device)
{
    constexpr qint64 kMaxPage = 256;
    constexpr int kHeader = 4;
    udev_device *holder = udev_device_get_parent(device);
    QFile page(holder ? text(udev_device_get_syspath(holder)) + QStringLiteral("/vpd_pg80") : QString());
    QString serial;
    if (page.open(QIODevice::ReadOnly))
        serial = QString::fromLatin1(page.read(kMaxPage).mid(kHeader)).trimmed();
    udev_device *bridge = udev_device_get_parent_with_subsystem_devtype(device, "usb", "usb_device");
    return serial.isEmpty() ? attribute(bridge, "serial") : serial;
}

BlockDisk describe(udev_device *device)
{
    BlockDisk disk;
    disk.node = text(udev_device_get_devnode(device));
    disk.device = udev_device_get_devnum(device);
    disk.isRemovable = removableAttribute(device);
    disk.vendor = reported(device, "ID_VENDOR_ENC", "ID_VENDOR", "vendor");
    disk.product = reported(device, "ID_MODEL_ENC", "ID_MODEL", "model");
    disk.revision = reported(device, "ID_REVISION", "ID_REVISION", "rev");
    disk.serial = property(device, "ID_SERIAL_SHORT");
    if (disk.serial.isEmpty())
        disk.serial = unitSerial(device);
    disk.identity = identityOf(device, disk);
    if (disk.vendor == QLatin1String(kTranslatedVendor)) {
        disk.vendor.clear();
        // udev's ata_id reads IDENTIFY, and sets no vendor.
        const bool isWhole =
            property(device, "ID_VENDOR").isEmpty() && !property(device, "ID_MODEL").isEmpty();
        if (!isWhole) {
            disk.product.clear();
            disk.revision.clear();
        }
    }
    return disk;
}

/// Returns the whole disk that a block device is, or is a partition of.
dev_t wholeDiskOf(dev_t device)
{
    const Udev udev(udev_new());
    const UdevDevice entry(udev ? udev_device_new_from_devnum(udev.get(), 'b', device) : nullptr);
    if (!entry)
        return device;
    udev_device *disk = udev_device_get_parent_with_subsystem_devtype(entry.get(), "block", "disk");
    return disk ? udev_device_get_devnum(disk) : device;
}

/// Returns the devices that a mapped device (dm, md) is made of. Only the kernel's tree has them.
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

int placeBelow(dev_t device, const QVector<dev_t> &disks, int depth)
{
    int place = int(disks.indexOf(wholeDiskOf(device)));
    if (place >= 0 || depth >= kDeepestMapping)
        return place;
    for (const dev_t slave : slavesOf(device)) {
        place = placeBelow(slave, disks, depth + 1);
        if (place >= 0)
            break;
    }
    return place;
}

bool isListed(udev_device *device)
{
    return device && udev_device_get_devnode(device) && isRealDisk(device);
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
        if (isListed(device.get()))
            disks.append(describe(device.get()));
    }
    std::sort(disks.begin(), disks.end(), [](const BlockDisk &a, const BlockDisk &b) {
        return a.node.size() != b.node.size() ? a.node.size() < b.node.size() : a.node < b.node;
    });
    return disks;
}

std::optional<BlockDisk> BlockDevices::wholeDisk(dev_t device)
{
    const Udev udev(udev_new());
    const UdevDevice entry(udev ? udev_device_new_from_devnum(udev.get(), 'b', device) : nullptr);
    return isListed(entry.get()) ? std::optional<BlockDisk>(describe(entry.get())) : std::nullopt;
}

int BlockDevices::diskBelow(dev_t device, const QVector<dev_t> &disks)
{
    return placeBelow(device, disks, 0);
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
