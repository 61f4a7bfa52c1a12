// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Halvex developers
#pragma once

#include "disk/device_record.h"

#include <QString>

#include <functional>

/// The texts inside the inventory replies. Numbers are decimal and unpadded, flags 0 or 1, and stored texts
/// go in as they stand: one that contains a separator makes its payload ambiguous.
namespace payload {

[[nodiscard]] QString device(const DeviceRecord &device);
/// "0" without devices.
[[nodiscard]] QString allDevices(const DeviceList &devices);

[[nodiscard]] QString volume(const VolumeEntry &volume);
/// Every volume with the index of its device; "0" without devices, empty with devices but no volumes.
[[nodiscard]] QString allVolumes(const DeviceList &devices);

[[nodiscard]] QString smartInformation(const DeviceRecord &device);
/// The last attribute's current value lacks its last digit; consoles rely on it.
[[nodiscard]] QString smartValues(const DeviceRecord &device);
/// Every attribute with the index of its device; "0" without devices, empty with devices but no attributes.
[[nodiscard]] QString allSmart(const DeviceList &devices);

/// State, progress and bad ranges of every device's last scan; `isScanRunning` is asked by device index.
[[nodiscard]] QString scanStatus(const DeviceList &devices, const std::function<bool(int)> &isScanRunning);

/// Every device's schedule, each item led by its "]![".
[[nodiscard]] QString scanSchedule(const DeviceList &devices);

} // namespace payload
