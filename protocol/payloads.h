// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"

#include <QByteArray>
#include <QString>
#include <QVector>

/// The texts inside the inventory replies. Numbers are decimal and unpadded, flags 0 or 1. Stored texts are
/// included unchanged: one that contains a separator makes its payload ambiguous.
namespace payload {

[[nodiscard]] QString device(const DeviceRecord &device);
/// Returns all devices; "0" without any.
[[nodiscard]] QString allDevices(const DeviceList &devices);

[[nodiscard]] QString volume(const VolumeEntry &volume);
/// Returns every volume with the index of its device; "0" without devices, empty with devices but no volumes.
[[nodiscard]] QString allVolumes(const DeviceList &devices);

[[nodiscard]] QString smartInformation(const DeviceRecord &device);
/// The last attribute's current value lacks its last digit; consoles rely on it.
[[nodiscard]] QString smartValues(const DeviceRecord &device);
/// Returns a device's attributes, each with the device's index, as the reply about all devices contains them.
[[nodiscard]] QString smartAttributes(int device, const QVector<AttributeEntry> &attributes);

/// Returns state and progress of a device's last scan.
[[nodiscard]] QString scanStatus(int index, const DeviceRecord &device, bool isRunning);
/// Returns the ranges from `begin` to the one before `end`, each led by its separator: they follow
/// scanStatus().
[[nodiscard]] QByteArray badRanges(const QVector<SectorRange> &ranges, int begin, int end);
/// Returns the size of all of them, in bytes.
[[nodiscard]] qint64 badRangesLength(const QVector<SectorRange> &ranges);

/// Returns every device's schedule, each item led by its "]![".
[[nodiscard]] QString scanSchedule(const DeviceList &devices);

} // namespace payload
